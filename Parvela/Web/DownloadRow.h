#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <filesystem>
#include <functional>
#include <string>

#include <gtk/gtk.h>

namespace parvela {

/// The progress of one download at the bottom of a window. Goes when it is destroyed, unless it has finished: then it
/// offers the file for a while.
class DownloadRow {
public:
    DownloadRow(GtkBox* rows, const std::string& name, std::function<void()> cancel);
    DownloadRow(const DownloadRow&) = delete;
    DownloadRow& operator=(const DownloadRow&) = delete;
    ~DownloadRow();

    /// 0 to 1.
    void setProgress(double progress);
    /// The file is there.
    void finish(const std::filesystem::path& file);

private:
    Ref<GtkWidget> row_;
    GtkWidget* progress_;
    GtkWidget* button_;
    Connection pressed_;
    bool finished_ = false;
};

}  // namespace parvela
