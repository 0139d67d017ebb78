#pragma once

#include "RawEnum.h"

#include <array>
#include <string_view>
#include <utility>

namespace tosvar {

enum class AppearanceMode { system, light, dark };
enum class AccentColor { graphite, amber, indigo, blue };
enum class AppLanguage { system, en, de, fr, es, ja, ko, zh, zhHant };
enum class CaptureCardCorner { bottomRight, bottomLeft, topRight, topLeft };
enum class RecordingCameraShape { circle, square, wide, classic };
enum class RecordingCameraBackground { none, blur, remove };
enum class RecordingCameraQuality { hd720, hd1080 };
enum class AudioRecordingQuality { voice, standard, high };
enum class DoubleTapModifier { off, command, option, control };
// Fields of the sibling products, carried so that a shared store survives a save.
enum class PanelDisplayMode { window, bottomBar, topBar };
enum class OpenWindowPosition { activeScreenCenter, mainScreenCenter, nearMouse, lastPosition };
enum class CaptureMode { whitelist, blacklist };

#define TOSVAR_RAW(E, v, text) std::pair{E::v, std::string_view(text)}

template <> struct RawEnum<AppearanceMode> {
    static constexpr std::array table{TOSVAR_RAW(AppearanceMode, system, "system"),
                                      TOSVAR_RAW(AppearanceMode, light, "light"),
                                      TOSVAR_RAW(AppearanceMode, dark, "dark")};
};
template <> struct RawEnum<AccentColor> {
    static constexpr std::array table{
        TOSVAR_RAW(AccentColor, graphite, "graphite"), TOSVAR_RAW(AccentColor, amber, "amber"),
        TOSVAR_RAW(AccentColor, indigo, "indigo"), TOSVAR_RAW(AccentColor, blue, "blue")};
};
template <> struct RawEnum<AppLanguage> {
    static constexpr std::array table{
        TOSVAR_RAW(AppLanguage, system, "system"), TOSVAR_RAW(AppLanguage, en, "en"),
        TOSVAR_RAW(AppLanguage, de, "de"),         TOSVAR_RAW(AppLanguage, fr, "fr"),
        TOSVAR_RAW(AppLanguage, es, "es"),         TOSVAR_RAW(AppLanguage, ja, "ja"),
        TOSVAR_RAW(AppLanguage, ko, "ko"),         TOSVAR_RAW(AppLanguage, zh, "zh"),
        TOSVAR_RAW(AppLanguage, zhHant, "zh-Hant")};
};
template <> struct RawEnum<CaptureCardCorner> {
    static constexpr std::array table{
        TOSVAR_RAW(CaptureCardCorner, bottomRight, "bottomRight"), TOSVAR_RAW(CaptureCardCorner, bottomLeft, "bottomLeft"),
        TOSVAR_RAW(CaptureCardCorner, topRight, "topRight"), TOSVAR_RAW(CaptureCardCorner, topLeft, "topLeft")};
};
template <> struct RawEnum<RecordingCameraShape> {
    static constexpr std::array table{
        TOSVAR_RAW(RecordingCameraShape, circle, "circle"), TOSVAR_RAW(RecordingCameraShape, square, "square"),
        TOSVAR_RAW(RecordingCameraShape, wide, "wide"), TOSVAR_RAW(RecordingCameraShape, classic, "classic")};
};
template <> struct RawEnum<RecordingCameraBackground> {
    static constexpr std::array table{TOSVAR_RAW(RecordingCameraBackground, none, "none"),
                                      TOSVAR_RAW(RecordingCameraBackground, blur, "blur"),
                                      TOSVAR_RAW(RecordingCameraBackground, remove, "remove")};
};
template <> struct RawEnum<RecordingCameraQuality> {
    static constexpr std::array table{TOSVAR_RAW(RecordingCameraQuality, hd720, "hd720"),
                                      TOSVAR_RAW(RecordingCameraQuality, hd1080, "hd1080")};
};
template <> struct RawEnum<AudioRecordingQuality> {
    static constexpr std::array table{TOSVAR_RAW(AudioRecordingQuality, voice, "voice"),
                                      TOSVAR_RAW(AudioRecordingQuality, standard, "standard"),
                                      TOSVAR_RAW(AudioRecordingQuality, high, "high")};
};
template <> struct RawEnum<DoubleTapModifier> {
    static constexpr std::array table{
        TOSVAR_RAW(DoubleTapModifier, off, "off"), TOSVAR_RAW(DoubleTapModifier, command, "command"),
        TOSVAR_RAW(DoubleTapModifier, option, "option"), TOSVAR_RAW(DoubleTapModifier, control, "control")};
};
template <> struct RawEnum<PanelDisplayMode> {
    static constexpr std::array table{TOSVAR_RAW(PanelDisplayMode, window, "window"),
                                      TOSVAR_RAW(PanelDisplayMode, bottomBar, "bottomBar"),
                                      TOSVAR_RAW(PanelDisplayMode, topBar, "topBar")};
};
template <> struct RawEnum<OpenWindowPosition> {
    static constexpr std::array table{
        TOSVAR_RAW(OpenWindowPosition, activeScreenCenter, "activeScreenCenter"),
        TOSVAR_RAW(OpenWindowPosition, mainScreenCenter, "mainScreenCenter"),
        TOSVAR_RAW(OpenWindowPosition, nearMouse, "nearMouse"),
        TOSVAR_RAW(OpenWindowPosition, lastPosition, "lastPosition")};
};
template <> struct RawEnum<CaptureMode> {
    static constexpr std::array table{TOSVAR_RAW(CaptureMode, whitelist, "whitelist"),
                                      TOSVAR_RAW(CaptureMode, blacklist, "blacklist")};
};

#undef TOSVAR_RAW

} // namespace tosvar
