#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <filesystem>
#include <functional>
#include <optional>
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

    /// How much of it has come, 0 to 1; none when nobody knows how much there is.
    void setProgress(std::optional<double> progress);
    /// The file is there.
    void finish(const std::filesystem::path& file);

private:
    Ref<GtkWidget> row_;
    GtkWidget* progress_;
    GtkWidget* button_;
    Connection pressed_;
    gint64 pulsedAt_ = 0;
    bool finished_ = false;
};

}  // namespace parvela
