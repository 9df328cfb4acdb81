#include "Store/FileStore.h"

namespace parvela::service {

namespace {

constexpr std::string_view selectColumns = "SELECT id, task_id, name, mime, size FROM files ";

FileRow readFile(const Statement& row) {
    return {.id = row.id<FileId>(0),
            .task = row.id<TaskId>(1),
            .name = row.text(2),
            .mime = row.text(3),
            .size = row.integer(4)};
}

}  // namespace

std::vector<FileRow> FileStore::ofTask(TaskId task) {
    std::vector<FileRow> files;
    auto rows = database_.query(std::string(selectColumns) + "WHERE task_id = ? ORDER BY id", task);
    while (rows.step()) files.push_back(readFile(rows));
    return files;
}

std::optional<FileRow> FileStore::find(FileId id) {
    auto row = database_.query(std::string(selectColumns) + "WHERE id = ?", id);
    if (!row.step()) return {};
    return readFile(row);
}

std::string FileStore::contents(FileId id) {
    auto row = database_.query("SELECT bytes FROM file_contents WHERE file_id = ?", id);
    return row.step() ? row.blob(0) : std::string();
}

std::int64_t FileStore::count(TaskId task) {
    auto row = database_.query("SELECT count(*) FROM files WHERE task_id = ?", task);
    return row.step() ? row.integer(0) : 0;
}

FileId FileStore::add(const NewFile& file, std::string_view bytes) {
    Transaction transaction(database_);
    database_.run("INSERT INTO files(task_id, name, mime, size, created_at, created_by) VALUES (?, ?, ?, ?, ?, ?)",
                  file.task, file.name, file.mime, static_cast<std::int64_t>(bytes.size()), clock_.now(), file.creator);
    const FileId id{database_.lastInsertedRow()};
    database_.run("INSERT INTO file_contents(file_id, bytes) VALUES (?, ?)", id, Statement::Blob{bytes});
    transaction.commit();
    return id;
}

void FileStore::remove(FileId id) {
    database_.run("DELETE FROM files WHERE id = ?", id);
}

}  // namespace parvela::service
