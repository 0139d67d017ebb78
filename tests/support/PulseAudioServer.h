#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tosvar {

// A PulseAudio server of the test's own, in a temporary runtime folder, with
// a null sink "speakers" (the default sink: what it plays can be recorded
// from its monitor) and "mic", a source that hears the same sound (the
// default source: a stand-in microphone). Stopped with the object.
// `useAsServer` points this process's clients at it.
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

    // Plays interleaved stereo floats at 48 kHz into "speakers" (through pacat);
    // returns once played.
    bool play(const std::vector<float>& samples) const;

private:
    void shutDown();

    std::filesystem::path folder_;
    std::string address_;
    pid_t pid_ = -1;
};

} // namespace tosvar
