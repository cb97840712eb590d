// The floor for `ringwell send`: a process that starts, writes a file of the
// given size crash-safely (temporary file, write, fsync, rename, fsync of the
// directory) and exits. No ICU, no JSON, no socket.
//
// Usage: ringwell-write-floor TARGET BYTES

#include <cstdio>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: ringwell-write-floor TARGET BYTES\n");
        return 2;
    }
    const std::string target = argv[1];
    const std::string contents(std::strtoul(argv[2], nullptr, 10), 'x');
    const std::string temporary = target + ".tmp-floor";
    const std::string directory =
        target.find('/') == std::string::npos ? "." : target.substr(0, target.rfind('/'));

    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0 || ::write(fd, contents.data(), contents.size()) != ssize_t(contents.size()) ||
        ::fsync(fd) != 0 || ::close(fd) != 0 || ::rename(temporary.c_str(), target.c_str()) != 0) {
        std::perror(temporary.c_str());
        return 1;
    }
    const int dir = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir < 0 || ::fsync(dir) != 0) {
        std::perror(directory.c_str());
        return 1;
    }
    ::close(dir);
    return 0;
}
