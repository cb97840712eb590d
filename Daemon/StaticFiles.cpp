#include "Daemon/StaticFiles.h"

#include <fstream>
#include <map>
#include <optional>
#include <sstream>

namespace ringwell {

StaticFiles::StaticFiles(std::filesystem::path root) : root_(std::move(root)) {}

std::string_view StaticFiles::contentType(const std::filesystem::path& file) {
    static const std::map<std::string, std::string_view> types = {
        {".html", "text/html; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".json", "application/json"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"},
        {".ico", "image/x-icon"},
        {".woff2", "font/woff2"},
        {".sh", "text/x-shellscript; charset=utf-8"},
        {".txt", "text/plain; charset=utf-8"},
        {".webmanifest", "application/manifest+json"}};
    auto found = types.find(file.extension().string());
    return found == types.end() ? "application/octet-stream" : found->second;
}

namespace {

// The file's real location when it lies inside `root` once symbolic links are
// followed; none when it escapes.
std::optional<std::filesystem::path> insideRoot(const std::filesystem::path& root,
                                                const std::filesystem::path& file) {
    std::error_code error;
    auto realRoot = std::filesystem::weakly_canonical(root, error);
    if (error)
        return std::nullopt;
    auto real = std::filesystem::weakly_canonical(file, error);
    if (error)
        return std::nullopt;
    auto relative = real.lexically_relative(realRoot);
    if (relative.empty() || *relative.begin() == "..")
        return std::nullopt;
    return real;
}

} // namespace

ApiResponse StaticFiles::serve(std::string_view path) const {
    // A NUL would cut the name short where the system reads it.
    if (path.find('\0') != std::string_view::npos)
        return ApiResponse::error(404, "not found");
    std::filesystem::path relative = std::filesystem::path(path).relative_path().lexically_normal();
    if (relative.empty() || relative == ".")
        relative = "index.html";
    if (!relative.empty() && *relative.begin() == "..")
        return ApiResponse::error(404, "not found");
    std::filesystem::path file = root_ / relative;
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        // The app's own routes ("/history") load the app itself.
        if (relative.has_extension())
            return ApiResponse::error(404, "not found");
        file = root_ / "index.html";
    }
    auto real = insideRoot(root_, file);
    if (!real)
        return ApiResponse::error(404, "not found");
    file = *real;
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return ApiResponse::error(404, "The web app is not built. Run `make` and start again.");
    std::ostringstream contents;
    contents << in.rdbuf();
    ApiResponse response = ApiResponse::text(contents.str(), std::string(contentType(file)));
    response.headers = {{"X-Content-Type-Options", "nosniff"},
                        {"Content-Security-Policy",
                         "default-src 'self'; img-src 'self' data:; style-src 'self' "
                         "'unsafe-inline'; connect-src 'self'; frame-ancestors 'none'"}};
    return response;
}

} // namespace ringwell
