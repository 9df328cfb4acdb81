#pragma once

#include <ParvelaKit/Result.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace parvela {

/// Owns a file descriptor.
class FileDescriptor {
public:
    explicit FileDescriptor(int number = -1) noexcept : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    ~FileDescriptor();

    int get() const noexcept { return number_; }
    explicit operator bool() const noexcept { return number_ >= 0; }

private:
    int number_;
};

/// Tells one state of a file from another, replaced or written in place.
struct FileStamp {
    std::uint64_t device = 0, inode = 0, size = 0;
    std::int64_t seconds = 0, nanoseconds = 0;
    bool operator==(const FileStamp&) const = default;

    /// None when there is no file.
    static std::optional<FileStamp> of(const std::filesystem::path& file);
};

/// The whole of a regular file; std::errc::file_too_large beyond `limit` bytes. Never waits for a device or pipe.
Result<std::string, std::error_code> readWholeFile(const std::filesystem::path& file, std::size_t limit);

/// Puts `content` in place of the file (mode 0600): after a crash there is the old file or the new one, whole. Drafts
/// beside it under the name with ".new" added; callers exclude each other with a FileLock.
std::error_code replaceFile(const std::filesystem::path& file, std::string_view content);

/// Excludes other processes that lock the same file, as long as it lives.
class FileLock {
public:
    /// std::errc::timed_out when somebody else held the lock all the time.
    static Result<FileLock, std::error_code> acquire(const std::filesystem::path& file,
                                                     std::chrono::milliseconds patience);

private:
    explicit FileLock(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

    FileDescriptor descriptor_;
};

}  // namespace parvela
