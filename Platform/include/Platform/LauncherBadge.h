#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace parvela {

/// The count on the program's icon in docks and task bars that know com.canonical.Unity.LauncherEntry, and the
/// program's part of the icon's menu. Both go with the object. Docks remember nothing and are not asked, so the count
/// is said again a little after a change.
class LauncherBadge {
public:
    /// `desktopEntry` is the program's desktop file without ".desktop".
    explicit LauncherBadge(const std::string& desktopEntry);
    LauncherBadge(const LauncherBadge&) = delete;
    LauncherBadge& operator=(const LauncherBadge&) = delete;
    ~LauncherBadge();

    /// Zero and less show nothing.
    void setCount(std::int64_t count);
    /// Offers a menu exported on the session bus at this object path.
    void setMenu(const std::string& objectPath);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace parvela
