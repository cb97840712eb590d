#include "Cli/SiblingProgram.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <vector>

namespace ringwell::cli {
namespace {

// Beside `ringwell` in the build tree, in <prefix>/libexec/ringwell when
// installed.
std::filesystem::path siblingFor(const std::filesystem::path& self, std::string_view program) {
    const auto installed = self.parent_path() / ".." / "libexec" / "ringwell" / program;
    std::error_code error;
    if (std::filesystem::is_regular_file(installed, error))
        return installed.lexically_normal();
    return self.parent_path() / program;
}

} // namespace

int execSibling(CommandContext& context, std::string_view command, std::string_view program,
                std::span<const std::string> leading, std::span<const std::string> args) {
    std::error_code error;
    auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        context.err << "ringwell " << command << ": cannot find " << program << ": "
                    << error.message() << '\n';
        return exitFailure;
    }
    std::string path = siblingFor(self, program).string();
    std::vector<std::string> copies(leading.begin(), leading.end());
    copies.insert(copies.end(), args.begin(), args.end());
    std::vector<char*> argv{path.data()};
    for (auto& arg : copies)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    context.out.flush();
    context.err.flush();
    ::execv(path.c_str(), argv.data());
    context.err << "ringwell " << command << ": cannot start " << path << ": "
                << std::strerror(errno) << '\n';
    return exitFailure;
}

} // namespace ringwell::cli
