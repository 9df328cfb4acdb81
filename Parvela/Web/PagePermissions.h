#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Preferences.h>

#include <optional>
#include <string>
#include <vector>

#include <webkit/webkit.h>

namespace parvela {

/// Asks the user when a page wants something of the machine, and remembers the answer for the page's origin.
class PagePermissions {
public:
    PagePermissions(WebKitWebView* view, Preferences preferences);
    PagePermissions(const PagePermissions&) = delete;
    PagePermissions& operator=(const PagePermissions&) = delete;
    ~PagePermissions();

    /// The remembered answer; none when the user was not asked. `kind` is a word such as "notifications".
    static std::optional<bool> remembered(const Preferences& preferences, const std::string& origin,
                                          const std::string& kind);

    struct Answer {
        std::string origin;
        std::string kind;
        bool allowed = false;
        bool operator==(const Answer&) const = default;
    };
    /// All answers that are remembered.
    static std::vector<Answer> answers(const Preferences& preferences);
    /// The page will be asked about again.
    static void forget(const Preferences& preferences, const Answer& answer);

private:
    bool requested(WebKitPermissionRequest* request);
    bool queried(WebKitPermissionStateQuery* query) const;
    std::optional<std::string> origin() const;

    WebKitWebView* view_;
    Preferences preferences_;
    GtkWidget* open_ = nullptr;  ///< the question on the screen, a weak pointer
    std::vector<Connection> connections_;
};

}  // namespace parvela
