#include "AtomicFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tosvar {

namespace {

std::string describe(int error) { return std::strerror(error); }

} // namespace

AtomicFile::AtomicFile(std::filesystem::path target) : target_(std::move(target)) {}

AtomicFile::~AtomicFile() {
    if (fd_ >= 0) {
        ::close(fd_);
        ::unlink(temporary_.c_str());
    }
}

std::optional<Error> AtomicFile::open() {
    std::error_code ec;
    // A bare file name lives in the working folder, which exists.
    if (!target_.parent_path().empty()) std::filesystem::create_directories(target_.parent_path(), ec);
    if (ec) return Error{"cannot create folder " + target_.parent_path().string() + ": " + ec.message()};
    std::string pattern = (target_.parent_path() / ("." + target_.filename().string() + ".XXXXXX")).string();
    fd_ = ::mkstemp(pattern.data());
    if (fd_ < 0) return Error{"cannot create a file in " + target_.parent_path().string() + ": " + describe(errno)};
    ::fchmod(fd_, 0644);
    temporary_ = pattern;
    return std::nullopt;
}

bool AtomicFile::write(const std::uint8_t* bytes, std::size_t count) {
    if (fd_ < 0 || writeErrno_ != 0) return false;
    while (count > 0) {
        const ssize_t written = ::write(fd_, bytes, count);
        if (written < 0) {
            if (errno == EINTR) continue;
            writeErrno_ = errno;
            return false;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

std::optional<Error> AtomicFile::commit() {
    if (fd_ < 0) return Error{"cannot write " + target_.string() + ": the file was never opened"};
    const int fd = fd_;
    fd_ = -1;
    auto fail = [this](const std::string& what, int error) {
        ::unlink(temporary_.c_str());
        return Error{"cannot write " + target_.string() + ": " + what + ": " + describe(error)};
    };
    if (writeErrno_ != 0) {
        ::close(fd);
        return fail("write failed", writeErrno_);
    }
    if (::fsync(fd) != 0) {
        const int error = errno;
        ::close(fd);
        return fail("flush failed", error);
    }
    if (::close(fd) != 0) return fail("close failed", errno);
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) return fail("rename failed", errno);
    return std::nullopt;
}

std::optional<Error> AtomicFile::write(const std::filesystem::path& target, std::span<const std::uint8_t> bytes) {
    AtomicFile file(target);
    if (auto error = file.open()) return error;
    file.write(bytes.data(), bytes.size());
    return file.commit();
}

std::optional<Error> AtomicFile::write(const std::filesystem::path& target, std::string_view text) {
    return write(target, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

} // namespace tosvar
