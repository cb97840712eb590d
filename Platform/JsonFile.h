#pragma once

#include "Core/Json.h"
#include "Core/Result.h"
#include "Model/AtomicFile.h"
#include "Model/ErrorLog.h"

#include <filesystem>
#include <optional>
#include <string>

// The small JSON files the platform layer keeps for itself (the alarm
// service's file, the settings file): private directories, crash-safe whole
// rewrites, and a file that cannot be read moved aside rather than lost.
//
// Blocking file I/O, meant for the daemon's main thread; nothing here keeps
// state.
namespace ringwell::JsonFile {

// Creates `directory` and its missing parents with mode 0700; existing
// directories keep their mode.
Result<bool> createPrivateDirectories(const std::filesystem::path& directory);

// Reads and parses `file` and hands the JSON value to `decode`, which may throw
// json::DecodeError. A missing file gives none. A file that cannot be read,
// parsed or decoded is moved to its quarantine path (AtomicFile::quarantine),
// `log` is told what happened, and the result is none, so the caller starts
// afresh without losing the bad file.
template <typename Decoder>
auto loadOrQuarantine(const std::filesystem::path& file, Decoder decode, const ErrorLog& log)
    -> std::optional<decltype(decode(json::Json()))>;

// Writes `value` as compact JSON over `file` with AtomicFile::replace, after
// creating the file's directory (0700) when it is missing. The file gets mode
// 0600.
Result<AtomicFile::Written> write(const std::filesystem::path& file, const json::Json& value);

// The whole file, none when it does not exist, or why it cannot be read.
Result<std::optional<std::string>> readText(const std::filesystem::path& file);

// Moves `file` to its quarantine path and reports `reason` through `log`.
void quarantine(const std::filesystem::path& file, const std::string& reason, const ErrorLog& log);

template <typename Decoder>
auto loadOrQuarantine(const std::filesystem::path& file, Decoder decode, const ErrorLog& log)
    -> std::optional<decltype(decode(json::Json()))> {
    auto text = readText(file);
    if (!text) {
        quarantine(file, text.error().message, log);
        return std::nullopt;
    }
    if (!text.value())
        return std::nullopt;
    auto decoded = json::decode(*text.value(), decode);
    if (!decoded) {
        quarantine(file, decoded.error().message, log);
        return std::nullopt;
    }
    return std::move(decoded).value();
}

} // namespace ringwell::JsonFile
