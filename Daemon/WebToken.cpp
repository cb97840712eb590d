#include "Daemon/WebToken.h"

#include "Daemon/RuntimePaths.h"
#include "Model/AtomicFile.h"

#include <fstream>
#include <random>
#include <sstream>

namespace ringwell {
namespace {

constexpr const char* fileName = "web-token";

std::string randomToken() {
    std::random_device device; // the kernel's random source
    static constexpr char digits[] = "0123456789abcdef";
    std::string token;
    for (int i = 0; i < 32; ++i) {
        unsigned byte = device() & 0xFF;
        token.push_back(digits[byte >> 4]);
        token.push_back(digits[byte & 0x0F]);
    }
    return token;
}

bool isWellFormed(const std::string& token) {
    return token.size() == 64 && token.find_first_not_of("0123456789abcdef") == std::string::npos;
}

} // namespace

Result<std::string> loadOrCreateWebToken(const std::filesystem::path& configDirectory) {
    auto directory = makePrivateDirectory(configDirectory);
    if (!directory)
        return directory.error();
    auto path = configDirectory / fileName;
    std::ifstream file(path);
    std::string existing;
    if (file && std::getline(file, existing) && isWellFormed(existing))
        return existing;
    std::string token = randomToken();
    auto written = AtomicFile::replace(path, token + "\n");
    if (!written)
        return Error{"cannot write " + path.string() + ": " + written.error().message};
    return token;
}

} // namespace ringwell
