#pragma once

#include <ParvelaKit/KeyValueStore.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// The user's settings in one JSON file that people may read and edit.
///
/// Booleans, integers, numbers and text stand as JSON's own; bytes as {"data": base64}. Entries of other shapes read as
/// none and are kept as they are. The file is replaced atomically at every change and synced to disk (mode 0600, in a
/// folder of mode 0700).
///
/// Several processes may share the file: a change takes the lock file beside it, reads what the others wrote, and
/// changes its own keys only. Reading notices a file that another process replaced.
///
/// Nothing here throws or loses a value that was set: what cannot be written is reported, stays readable here, and is
/// written together with the next change.
class JsonDefaultsStore : public KeyValueStore {
public:
    /// Called with one English sentence about why settings could not be written.
    using FailureHandler = std::function<void(const std::string& message)>;

    explicit JsonDefaultsStore(const std::filesystem::path& file, FailureHandler onWriteFailure = {});
    JsonDefaultsStore(const JsonDefaultsStore&) = delete;
    JsonDefaultsStore& operator=(const JsonDefaultsStore&) = delete;
    ~JsonDefaultsStore() override;

    /// "defaults.json" in Parvela's configuration folder.
    static std::filesystem::path defaultFile();

    std::optional<StoredValue> get(std::string_view key) const override;
    void set(std::string_view key, StoredValue value) override;
    void remove(std::string_view key) override;
    std::vector<std::string> keys(std::string_view prefix) const override;

    /// While a Batch lives, changes are gathered; they are written together when the last one goes.
    class [[nodiscard]] Batch {
    public:
        explicit Batch(JsonDefaultsStore& store);
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;
        ~Batch();

    private:
        JsonDefaultsStore& store_;
    };

    /// What the user should know about the file found at the start, in one English sentence; none when all was well. A
    /// file that made no sense is kept beside the new one as "defaults.json.damaged-1", "-2" and so on.
    const std::optional<std::string>& warning() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace parvela
