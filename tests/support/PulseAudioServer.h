#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tosvar {

// A PulseAudio server of the test's own, in a temporary runtime folder, with
// a null sink "speakers" (the default sink: what it plays can be recorded
// from its monitor, the system's sound), and "mic", a source that hears
// what the null sink "room" plays (a stand-in microphone, the default
// source). Each null sink delivers sound only while something plays into it,
// and holds the first sound played after a recording starts back by about
// two seconds. Stopped with the object; `useAsServer` points this
// process's clients at it.
class PulseAudioServer {
public:
    // Whether the pulseaudio program is installed at all.
    static bool isInstalled();

    PulseAudioServer(); // throws when the server does not come up
    ~PulseAudioServer();
    PulseAudioServer(const PulseAudioServer&) = delete;
    PulseAudioServer& operator=(const PulseAudioServer&) = delete;

    const std::string& address() const { return address_; } // "unix:/tmp/.../native"
    void useAsServer() const;

    // Plays interleaved stereo floats at 48 kHz into a sink (through pacat);
    // returns once played.
    bool play(const std::vector<float>& samples, const std::string& sink = "speakers") const;

private:
    void shutDown();

    std::filesystem::path folder_;
    std::string address_;
    pid_t pid_ = -1;
};

} // namespace tosvar
