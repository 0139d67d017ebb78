#include "KeyPositions.h"

#include <array>

namespace tosvar {

namespace {

constexpr std::array<KeyPosition, 102> positions{{
    // Letters and digits of the ANSI block.
    {0, 30, 'a'}, {1, 31, 's'}, {2, 32, 'd'}, {3, 33, 'f'}, {4, 35, 'h'}, {5, 34, 'g'}, {6, 44, 'z'},
    {7, 45, 'x'}, {8, 46, 'c'}, {9, 47, 'v'}, {10, 86, '<'}, {11, 48, 'b'}, {12, 16, 'q'}, {13, 17, 'w'},
    {14, 18, 'e'}, {15, 19, 'r'}, {16, 21, 'y'}, {17, 20, 't'}, {18, 2, '1'}, {19, 3, '2'}, {20, 4, '3'},
    {21, 5, '4'}, {22, 7, '6'}, {23, 6, '5'}, {24, 13, '='}, {25, 10, '9'}, {26, 8, '7'}, {27, 12, '-'},
    {28, 9, '8'}, {29, 11, '0'}, {30, 27, ']'}, {31, 24, 'o'}, {32, 22, 'u'}, {33, 26, '['}, {34, 23, 'i'},
    {35, 25, 'p'}, {36, 28, 0xff0d}, {37, 38, 'l'}, {38, 36, 'j'}, {39, 40, '\''}, {40, 37, 'k'},
    {41, 39, ';'}, {42, 43, '\\'}, {43, 51, ','}, {44, 53, '/'}, {45, 49, 'n'}, {46, 50, 'm'}, {47, 52, '.'},
    {48, 15, 0xff09}, {49, 57, ' '}, {50, 41, '`'}, {51, 14, 0xff08}, {53, 1, 0xff1b},
    // Modifiers: right Command, left Command, Shift, Caps Lock, Option, Control, right Shift, right Option, right Control.
    {54, 97, 0xffe4}, {55, 29, 0xffe3}, {56, 42, 0xffe1}, {57, 58, 0xffe5}, {58, 56, 0xffe9}, {59, 125, 0xffeb},
    {60, 54, 0xffe2}, {61, 100, 0xffea}, {62, 126, 0xffec},
    // Keypad.
    {65, 83, 0xffae}, {67, 55, 0xffaa}, {69, 78, 0xffab}, {71, 69, 0xff7f}, {75, 98, 0xffaf}, {76, 96, 0xff8d},
    {78, 74, 0xffad}, {81, 117, 0xffbd}, {82, 82, 0xffb0}, {83, 79, 0xffb1}, {84, 80, 0xffb2}, {85, 81, 0xffb3},
    {86, 75, 0xffb4}, {87, 76, 0xffb5}, {88, 77, 0xffb6}, {89, 71, 0xffb7}, {91, 72, 0xffb8}, {92, 73, 0xffb9},
    // Function keys (F1 is 0xffbe).
    {122, 59, 0xffbe}, {120, 60, 0xffbf}, {99, 61, 0xffc0}, {118, 62, 0xffc1}, {96, 63, 0xffc2}, {97, 64, 0xffc3},
    {98, 65, 0xffc4}, {100, 66, 0xffc5}, {101, 67, 0xffc6}, {109, 68, 0xffc7}, {103, 87, 0xffc8}, {111, 88, 0xffc9},
    // Navigation: Help is Insert, forward delete is Delete.
    {114, 110, 0xff63}, {115, 102, 0xff50}, {116, 104, 0xff55}, {117, 111, 0xffff}, {119, 107, 0xff57},
    {121, 109, 0xff56}, {123, 105, 0xff51}, {124, 106, 0xff53}, {125, 108, 0xff54}, {126, 103, 0xff52},
}};

template <typename Matches>
std::optional<KeyPosition> findPosition(Matches matches)
{
    for (const KeyPosition& position : positions)
        if (matches(position))
            return position;
    return std::nullopt;
}

} // namespace

std::span<const KeyPosition> keyPositions() { return positions; }

std::optional<KeyPosition> keyPositionForMacKey(std::uint32_t macKeyCode)
{
    return findPosition([&](const KeyPosition& p) { return p.macKeyCode == macKeyCode; });
}

std::optional<KeyPosition> keyPositionForEvdev(std::uint32_t evdevCode)
{
    return findPosition([&](const KeyPosition& p) { return p.evdevCode == evdevCode; });
}

std::optional<KeyPosition> keyPositionForKeysym(std::uint32_t keysym)
{
    // Upper-case Latin letters name the same key as their lower case.
    if (keysym >= 'A' && keysym <= 'Z')
        keysym += 'a' - 'A';
    return findPosition([&](const KeyPosition& p) { return p.usKeysym == keysym; });
}

} // namespace tosvar
