#pragma once

#include "Daemon/ApiMessage.h"

#include <filesystem>
#include <string_view>

namespace ringwell {

// Serves the built web app from one directory: the file a path names, or
// index.html for paths without an extension (the app's own routes). Paths
// that climb out of the directory are refused. Blocking reads of small files
// on the main thread, which is fine for a handful of assets.
class StaticFiles {
public:
    explicit StaticFiles(std::filesystem::path root);

    ApiResponse serve(std::string_view path) const;

    // The MIME type of a file name by its extension.
    static std::string_view contentType(const std::filesystem::path& file);

private:
    std::filesystem::path root_;
};

} // namespace ringwell
