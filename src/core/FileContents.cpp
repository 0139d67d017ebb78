#include "FileContents.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace tosvar {

namespace {

template <typename Buffer>
Expected<Buffer> readAll(const std::filesystem::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return Error{"cannot open " + path.string() + ": " + std::strerror(errno)};
    Buffer contents;
    char chunk[65536];
    for (;;) {
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n == 0) break;
        if (n < 0) {
            if (errno == EINTR) continue;
            const int error = errno;
            ::close(fd);
            return Error{"cannot read " + path.string() + ": " + std::strerror(error)};
        }
        contents.insert(contents.end(), chunk, chunk + n);
    }
    ::close(fd);
    return contents;
}

} // namespace

Expected<std::vector<std::uint8_t>> readFileBytes(const std::filesystem::path& path) {
    return readAll<std::vector<std::uint8_t>>(path);
}

Expected<std::string> readFileText(const std::filesystem::path& path) { return readAll<std::string>(path); }

} // namespace tosvar
