#include "AtomicFile.h"
#include "StoredValueJson.h"

#include <ParvelaKit/Text.h>
#include <Platform/JsonDefaultsStore.h>
#include <Platform/XdgPaths.h>

#include <map>
#include <set>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr std::size_t largestFile = 8U * 1024 * 1024;
constexpr int mostDamagedFiles = 99;
/// Others hold the lock for one write. Waiting blocks the interface, so it ends soon.
constexpr std::chrono::milliseconds lockPatience{2000};

/// The file that a link stands for, so that settings kept elsewhere by a link stay there.
fs::path linkTarget(const fs::path& file) {
    std::error_code error;
    if (!fs::is_symlink(file, error)) return file;
    const fs::path target = fs::weakly_canonical(file, error);
    return error ? file : target;
}

fs::path besides(const fs::path& file, std::string_view ending) {
    return fs::path(file.string() + std::string(ending));
}

}  // namespace

class JsonDefaultsStore::Impl {
public:
    Impl(const fs::path& file, FailureHandler onWriteFailure)
        : file_(linkTarget(file)), onWriteFailure_(std::move(onWriteFailure)) {
        load();
    }

    std::optional<StoredValue> get(const std::string& key) {
        if (const auto change = pending_.find(key); change != pending_.end()) {
            return change->second ? storedValue(*change->second) : std::nullopt;
        }
        reloadIfReplaced();
        const auto entry = values_.find(key);
        return entry == values_.end() ? std::nullopt : storedValue(*entry);
    }

    std::vector<std::string> keys(const std::string& prefix) {
        reloadIfReplaced();
        std::set<std::string> found;
        for (const auto& [key, value] : values_.items()) {
            if (key.starts_with(prefix)) found.insert(key);
        }
        for (const auto& [key, value] : pending_) {
            if (!key.starts_with(prefix)) continue;
            if (value) {
                found.insert(key);
            } else {
                found.erase(key);
            }
        }
        return {found.begin(), found.end()};
    }

    void change(std::string key, std::optional<json> value) {
        reloadIfReplaced();
        if (const auto entry = values_.find(key); pending_.empty() && batches_ == 0) {
            const bool stored = entry != values_.end();
            if (value ? stored && storedValue(*entry) == storedValue(*value) : !stored) return;
        }
        pending_.insert_or_assign(std::move(key), std::move(value));
        save();
    }

    void save() {
        if (batches_ > 0 || pending_.empty()) return;
        if (const auto error = write()) {
            if (onWriteFailure_) {
                onWriteFailure_(
                    fmt::format("Settings couldn't be saved to “{}”: {}.", file_.string(), error.message()));
            }
        }
    }

    int batches_ = 0;
    std::optional<std::string> warning_;

private:
    /// Reads the file into values_. A file that makes no sense is put aside; one that cannot be read is left alone.
    void load() {
        unreadable_ = {};
        const auto stamp = FileStamp::of(file_);
        auto content = readWholeFile(file_, largestFile);
        if (content) {
            auto parsed = json::parse(*content, nullptr, false);
            if (parsed.is_object()) {
                values_ = std::move(parsed);
                stamp_ = stamp;
                return;
            }
        } else if (content.error() == std::errc::no_such_file_or_directory) {
            values_ = json::object();
            stamp_ = stamp;
            return;
        } else if (content.error() != std::errc::file_too_large) {
            values_ = json::object();
            stamp_ = stamp;
            unreadable_ = content.error();
            warning_ = fmt::format("Your settings in “{}” couldn't be read ({}). Parvela uses its defaults for now.",
                                   file_.string(), content.error().message());
            return;
        }
        // What an earlier reading gave stays in force, and goes into the new file with the next change.
        putAside();
        stamp_ = FileStamp::of(file_);
    }

    void putAside() {
        for (int number = 1; number <= mostDamagedFiles; ++number) {
            const fs::path kept = besides(file_, fmt::format(".damaged-{}", number));
            std::error_code error;
            if (fs::exists(fs::symlink_status(kept, error)) && number < mostDamagedFiles) continue;
            fs::rename(file_, kept, error);
            unreadable_ = error;
            warning_ = error ? fmt::format("Your settings in “{}” are damaged. Parvela uses its defaults for now.",
                                           file_.string())
                             : fmt::format(
                                   "Your settings file was damaged. Parvela kept it as “{}” and started with "
                                   "default settings.",
                                   kept.string());
            return;
        }
    }

    void reloadIfReplaced() {
        if (FileStamp::of(file_) != stamp_) load();
    }

    std::error_code write() {
        if (const auto error = ensurePrivateFolder(file_.parent_path())) return error;
        const auto lock = FileLock::acquire(besides(file_, ".lock"), lockPatience);
        if (!lock) return lock.error();
        reloadIfReplaced();
        // Writing now would destroy settings that somebody may still rescue.
        if (unreadable_) return unreadable_;

        json merged = values_;
        for (const auto& [key, value] : pending_) {
            if (value) {
                merged[key] = *value;
            } else {
                merged.erase(key);
            }
        }
        if (const auto error = replaceFile(file_, merged.dump(2) + "\n")) return error;
        values_ = std::move(merged);
        pending_.clear();
        stamp_ = FileStamp::of(file_);
        return {};
    }

    fs::path file_;
    FailureHandler onWriteFailure_;
    json values_ = json::object();
    std::optional<FileStamp> stamp_;
    std::error_code unreadable_;
    /// Changes that are not on disk yet; an empty value removes the key.
    std::map<std::string, std::optional<json>> pending_;
};

JsonDefaultsStore::JsonDefaultsStore(const fs::path& file, FailureHandler onWriteFailure)
    : impl_(std::make_unique<Impl>(file, std::move(onWriteFailure))) {
}

JsonDefaultsStore::~JsonDefaultsStore() {
    impl_->save();
}

fs::path JsonDefaultsStore::defaultFile() {
    return XdgPaths::current().config / "defaults.json";
}

namespace {

/// JSON keys are Unicode.
std::string jsonKey(std::string_view key) {
    return isValidUtf8(key) ? std::string(key) : toUtf8(toUtf16(key));
}

}  // namespace

std::optional<StoredValue> JsonDefaultsStore::get(std::string_view key) const {
    return impl_->get(jsonKey(key));
}

void JsonDefaultsStore::set(std::string_view key, StoredValue value) {
    impl_->change(jsonKey(key), toJson(value));
}

void JsonDefaultsStore::remove(std::string_view key) {
    impl_->change(jsonKey(key), std::nullopt);
}

std::vector<std::string> JsonDefaultsStore::keys(std::string_view prefix) const {
    return impl_->keys(jsonKey(prefix));
}

const std::optional<std::string>& JsonDefaultsStore::warning() const {
    return impl_->warning_;
}

JsonDefaultsStore::Batch::Batch(JsonDefaultsStore& store) : store_(store) {
    ++store_.impl_->batches_;
}

JsonDefaultsStore::Batch::~Batch() {
    if (--store_.impl_->batches_ == 0) store_.impl_->save();
}

}  // namespace parvela
