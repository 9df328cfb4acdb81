#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// Files attached to tasks. Their bytes live in the database too, so that one file is the whole workspace.
class FileStore {
public:
    FileStore(Database& database, const Clock& clock) : database_(database), clock_(clock) {}

    std::vector<FileRow> ofTask(TaskId task);
    std::optional<FileRow> find(FileId id);
    std::string contents(FileId id);
    std::int64_t count(TaskId task);

    struct NewFile {
        TaskId task;
        PersonId creator;
        std::string name;
        std::string mime;
    };
    FileId add(const NewFile& file, std::string_view bytes);
    void remove(FileId id);

private:
    Database& database_;
    const Clock& clock_;
};

}  // namespace parvela::service
