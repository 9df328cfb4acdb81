#include "AtomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace parvela {

namespace fs = std::filesystem;

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = write(descriptor, content.data(), content.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return lastError();
        }
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

std::error_code writeSynced(int descriptor, std::string_view content) {
    if (const auto error = writeAll(descriptor, content)) return error;
    return fsync(descriptor) == 0 ? std::error_code() : lastError();
}

std::error_code syncFolder(const fs::path& folder) {
    const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor) return lastError();
    // Some file systems cannot sync a folder; the rename itself has happened.
    return fsync(descriptor.get()) == 0 || errno == EINVAL ? std::error_code() : lastError();
}

}  // namespace

FileDescriptor::~FileDescriptor() {
    if (number_ >= 0) close(number_);
}

std::optional<FileStamp> FileStamp::of(const fs::path& file) {
    struct stat info{};
    if (stat(file.c_str(), &info) != 0) return std::nullopt;
    return FileStamp{.device = info.st_dev,
                     .inode = info.st_ino,
                     .size = static_cast<std::uint64_t>(info.st_size),
                     .seconds = info.st_mtim.tv_sec,
                     .nanoseconds = info.st_mtim.tv_nsec};
}

Result<std::string, std::error_code> readWholeFile(const fs::path& file, std::size_t limit) {
    const FileDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!descriptor) return Failure(lastError());
    struct stat info{};
    if (fstat(descriptor.get(), &info) != 0) return Failure(lastError());
    if (!S_ISREG(info.st_mode)) return Failure(std::make_error_code(std::errc::invalid_argument));

    std::string content;
    content.resize(std::min(static_cast<std::size_t>(info.st_size), limit) + 1);
    std::size_t filled = 0;
    for (;;) {
        if (filled == content.size()) content.resize(filled + 64 * 1024);
        const ssize_t count = read(descriptor.get(), content.data() + filled, content.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return Failure(lastError());
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
        if (filled > limit) return Failure(std::make_error_code(std::errc::file_too_large));
    }
    content.resize(filled);
    return content;
}

std::error_code replaceFile(const fs::path& file, std::string_view content) {
    const std::string draft = file.string() + ".new";
    std::error_code result;
    {
        constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
        const FileDescriptor descriptor(open(draft.c_str(), flags, 0600));
        if (!descriptor || fchmod(descriptor.get(), 0600) != 0) return lastError();
        result = writeSynced(descriptor.get(), content);
    }
    if (!result && rename(draft.c_str(), file.c_str()) != 0) result = lastError();
    if (result) {
        unlink(draft.c_str());
        return result;
    }
    return syncFolder(file.parent_path());
}

Result<FileLock, std::error_code> FileLock::acquire(const fs::path& file, std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds pause{1};
    FileDescriptor descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (!descriptor) return Failure(lastError());
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return Failure(lastError());
        if (std::chrono::steady_clock::now() >= deadline) return Failure(std::make_error_code(std::errc::timed_out));
        std::this_thread::sleep_for(pause);
    }
    return FileLock(std::move(descriptor));
}

}  // namespace parvela
