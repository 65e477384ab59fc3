// WholeFile.cpp - every byte written and the file closed without an error,
// or the file removed.

#include "WholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace korvane {

int writeNewFile(const std::filesystem::path& file, std::span<const std::uint8_t> bytes)
{
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return errno;
    std::size_t done = 0;
    int failure = 0;
    while (done < bytes.size() && failure == 0) {
        const ssize_t wrote = write(fd, bytes.data() + done, bytes.size() - done);
        if (wrote > 0)
            done += static_cast<std::size_t>(wrote);
        else if (wrote == 0)
            failure = EIO;
        else if (errno != EINTR)
            failure = errno;
    }
    // Some file systems report a failed write only when the file is closed.
    if (close(fd) != 0 && failure == 0 && errno != EINTR)
        failure = errno;
    if (failure != 0) {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    }
    return failure;
}

} // namespace korvane
