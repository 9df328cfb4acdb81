#include "DesktopChecks.h"

#include "AsyncCall.h"
#include "AtomicFile.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/GLibPtr.h>
#include <Platform/Autostart.h>
#include <Platform/XdgPaths.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <optional>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>
#include <gio/gio.h>

namespace parvela::diagnostics {

namespace {

using Verdict = Diagnostic::Verdict;

constexpr int keyringPatience = 5000;  // milliseconds

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value && g_utf8_validate(value, -1, nullptr) ? value : "";
}

/// A library that the window needs, and the functions that tell its version. It is loaded to be asked: the command does
/// not link it.
struct Library {
    const char* name;
    const char* file;
    std::array<const char*, 3> version;
};

constexpr std::array<Library, 3> libraries{{
    {"GTK", "libgtk-4.so.1", {"gtk_get_major_version", "gtk_get_minor_version", "gtk_get_micro_version"}},
    {"libadwaita", "libadwaita-1.so.0", {"adw_get_major_version", "adw_get_minor_version", "adw_get_micro_version"}},
    {"WebKitGTK",
     "libwebkitgtk-6.0.so.4",
     {"webkit_get_major_version", "webkit_get_minor_version", "webkit_get_micro_version"}},
}};

std::optional<std::string> versionOf(const Library& library) {
    void* const handle = dlopen(library.file, RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    if (!handle) return std::nullopt;
    std::string version;
    for (const char* const part : library.version) {
        using Number = guint (*)();
        const auto number = reinterpret_cast<Number>(dlsym(handle, part));
        if (!number) return std::nullopt;
        version += (version.empty() ? "" : ".") + std::to_string(number());
    }
    dlclose(handle);
    return version;
}

using AppInfo = Ref<GAppInfo>;

/// The names on the bus: those that are owned, and those that the bus can start.
struct Names {
    std::vector<std::string> owned, startable;

    bool isOwned(const std::string& name) const { return std::ranges::find(owned, name) != owned.end(); }
    bool isThere(const std::string& name) const {
        return isOwned(name) || std::ranges::find(startable, name) != startable.end();
    }
};

const dbus::Address theBus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};

Task<std::vector<std::string>> names(dbus::Bus bus, std::string method) {
    auto asking = dbus::call(bus, theBus, method, nullptr, dbus::Start::never);
    const VariantPtr answer = co_await asking;
    std::vector<std::string> found;
    if (answer && g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(as)"))) {
        StringsPtr list;
        g_variant_get(answer.get(), "(^as)", list.out());
        found.assign(list.get(), list.get() + g_strv_length(list.get()));
    }
    co_return found;
}

/// The Boolean that a property holds; none without an answer.
std::optional<bool> booleanIn(const VariantPtr& answer) {
    if (!answer || !g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(v)"))) return std::nullopt;
    VariantPtr value;
    g_variant_get(answer.get(), "(v)", value.out());
    if (!g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN)) return std::nullopt;
    return g_variant_get_boolean(value.get()) != FALSE;
}

/// A Boolean property; none when nobody answers.
Task<std::optional<bool>> property(dbus::Bus bus, dbus::Address address, std::string name) {
    const std::string interface = std::exchange(address.interface, "org.freedesktop.DBus.Properties");
    auto asking =
        dbus::call(bus, address, "Get", g_variant_new("(ss)", interface.c_str(), name.c_str()), dbus::Start::never);
    const VariantPtr answer = co_await asking;
    co_return booleanIn(answer);
}

Diagnostic automation(const Names& names, const std::string& id) {
    if (names.isOwned(id)) return {"Automation", Verdict::good, "Parvela runs and answers on the session bus.", ""};
    if (names.isThere(id))
        return {"Automation", Verdict::good, "The session bus starts Parvela when it is called.", ""};
    return {"Automation", Verdict::notice, "The session bus does not know Parvela, which does not run now.",
            "Install Parvela, or start it before scripts and the desktop's search call it."};
}

Task<Diagnostic> tray(dbus::Bus bus) {
    const dbus::Address watcher{"org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                                "org.kde.StatusNotifierWatcher"};
    auto asking = property(bus, watcher, "IsStatusNotifierHostRegistered");
    const auto hosted = co_await asking;
    const std::string remedy =
        "Parvela ends with its last window. For a tray, add one to the panel; GNOME has the extension “AppIndicator "
        "and "
        "KStatusNotifierItem Support”.";
    if (!hosted) co_return Diagnostic{"Tray", Verdict::notice, "This desktop has no tray for icons.", remedy};
    if (!*hosted) co_return Diagnostic{"Tray", Verdict::notice, "A tray is prepared, but no panel shows it.", remedy};
    co_return Diagnostic{"Tray", Verdict::good, "A panel shows tray icons.", ""};
}

Diagnostic portal(const Names& names) {
    if (names.isThere("org.freedesktop.portal.Desktop")) {
        return {"Desktop portal", Verdict::good, "The desktop portal is there.", ""};
    }
    if (environment("WAYLAND_DISPLAY").empty()) {
        return {"Desktop portal", Verdict::good, "There is no desktop portal; this kind of session does not need one.",
                ""};
    }
    return {"Desktop portal", Verdict::notice, "There is no desktop portal.",
            "Install xdg-desktop-portal and the back end of your desktop; the shortcut for quick add needs it."};
}

Task<Diagnostic> keyring(dbus::Bus bus, bool isThere) {
    const std::string what = "Keyring";
    if (!isThere) {
        co_return Diagnostic{what, Verdict::problem, "No keyring answers, so no token can be kept.",
                             "Install and start a keyring such as gnome-keyring or KWallet."};
    }
    const auto waiting = startAsync([&bus](GAsyncReadyCallback done, gpointer data) {
        g_dbus_connection_call(bus.get(), "org.freedesktop.secrets", "/org/freedesktop/secrets/aliases/default",
                               "org.freedesktop.DBus.Properties", "Get",
                               g_variant_new("(ss)", "org.freedesktop.Secret.Collection", "Locked"), nullptr,
                               G_DBUS_CALL_FLAGS_NO_AUTO_START, keyringPatience, nullptr, done, data);
    });
    const auto result = co_await waiting;
    ErrorPtr error;
    const VariantPtr answer(g_dbus_connection_call_finish(bus.get(), result.get(), error.out()));
    if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) {
        co_return Diagnostic{what, Verdict::problem, "The keyring does not answer, so no token can be read.",
                             "Start your keyring again, or sign out of the desktop and in again."};
    }
    const auto locked = booleanIn(answer);
    if (!locked) {
        co_return Diagnostic{what, Verdict::notice, "The keyring has no default collection yet, or is not started.",
                             "It is made when Parvela is linked; the desktop may ask for a password."};
    }
    if (*locked) {
        co_return Diagnostic{what, Verdict::problem, "The keyring is locked.",
                             "Unlock it with your password, for example by logging in again."};
    }
    co_return Diagnostic{what, Verdict::good, "The keyring is unlocked.", ""};
}

Task<Diagnostic> notifications(dbus::Bus bus, bool isOwned, bool isThere) {
    const std::string what = "Notifications";
    if (!isThere) {
        co_return Diagnostic{what, Verdict::notice, "No service shows notifications.",
                             "Start your desktop's notification service, or install one such as dunst."};
    }
    if (!isOwned)
        co_return Diagnostic{what, Verdict::good, "The desktop starts its notification service when needed.", ""};
    const dbus::Address service{"org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                "org.freedesktop.Notifications"};
    auto asking = dbus::call(bus, service, "GetServerInformation", nullptr, dbus::Start::never);
    const VariantPtr answer = co_await asking;
    if (!answer || !g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(ssss)"))) {
        co_return Diagnostic{what, Verdict::notice, "The notification service does not answer.", "Start it again."};
    }
    const char* name = nullptr;
    const char* version = nullptr;
    g_variant_get(answer.get(), "(&s&s&s&s)", &name, nullptr, &version, nullptr);
    co_return Diagnostic{what, Verdict::good, fmt::format("Notifications are shown by {} {}.", name, version), ""};
}

/// Puts as much into a folder as a change of the settings or a kept line takes, and takes it away again.
std::error_code tryToWrite(const std::filesystem::path& folder) {
    if (const auto error = ensurePrivateFolder(folder)) return error;
    const auto file = folder / fmt::format(".can-be-written-{}", getpid());
    const auto error = replaceFile(file, std::string(std::size_t{64} * 1024, '\0'));
    unlink(file.c_str());
    return error;
}

}  // namespace

Diagnostic versions() {
    std::string found = fmt::format("Parvela {}, GLib {}.{}.{}", BuildInfo::version(), glib_major_version,
                                    glib_minor_version, glib_micro_version);
    std::string missing;
    for (const Library& library : libraries) {
        if (const auto version = versionOf(library)) {
            found += fmt::format(", {} {}", library.name, *version);
        } else {
            missing += (missing.empty() ? "" : ", ") + std::string(library.name);
        }
    }
    if (missing.empty()) return {"Versions", Verdict::good, found + ".", ""};
    return {"Versions", Verdict::problem, found + ". Not found: " + missing + ".",
            "Install what is missing; without it Parvela's window can't open."};
}

Diagnostic sessionType() {
    const std::string desktop = environment("XDG_CURRENT_DESKTOP");
    const std::string on = desktop.empty() ? "" : " on " + desktop;
    if (!environment("WAYLAND_DISPLAY").empty()) return {"Session", Verdict::good, "Wayland" + on + ".", ""};
    if (!environment("DISPLAY").empty()) return {"Session", Verdict::good, "X11" + on + ".", ""};
    return {"Session", Verdict::notice, "There is no display.",
            "The command works here; the window needs a desktop session."};
}

Diagnostic renderer(bool isSafe) {
    std::error_code error;
    bool hasNode = false;
    for (std::filesystem::directory_iterator entry("/dev/dri", error), end; !error && entry != end;
         entry.increment(error)) {
        hasNode = hasNode || entry->path().filename().string().starts_with("renderD");
    }
    std::string found = !hasNode ? "There is no graphics card to use; pages are drawn in software."
                        : isSafe ? "The graphics card is not used, as chosen in Settings."
                                 : "A graphics card can be used.";
    for (const char* const name : {"GSK_RENDERER", "WEBKIT_DISABLE_DMABUF_RENDERER"}) {
        const std::string value = environment(name);
        if (!value.empty()) found += fmt::format(" {} is set to “{}”.", name, value);
    }
    return {"Renderer", Verdict::good, found, ""};
}

Diagnostic files() {
    const auto paths = XdgPaths::current();
    for (const auto& folder : {paths.config, paths.data, paths.cache}) {
        if (const auto error = tryToWrite(folder)) {
            return {"Files", Verdict::problem,
                    fmt::format("{} can't be written: {}.", folder.string(), error.message()),
                    "Make room on the disk, and see to it that the folder is yours."};
        }
    }
    return {"Files", Verdict::good, "Settings and data can be written.", ""};
}

Diagnostic links(const std::string& applicationId) {
    if (isSandboxed()) {  // the desktop's choice is not to be seen from there
        return {"Links", Verdict::good, "Flatpak offers Parvela to the desktop for “parvela” links.", ""};
    }
    const auto handler = AppInfo::adopt(g_app_info_get_default_for_uri_scheme("parvela"));
    const char* const id = handler ? g_app_info_get_id(handler.get()) : nullptr;
    const std::string remedy =
        fmt::format("Run “xdg-mime default {}.desktop x-scheme-handler/parvela”.", applicationId);
    if (!id) {
        return {"Links", Verdict::notice,
                "Nothing opens “parvela” links, by which sign-ins come back from the browser.",
                "Install Parvela. " + remedy};
    }
    if (id == applicationId + ".desktop") return {"Links", Verdict::good, "“parvela” links open Parvela.", ""};
    return {"Links", Verdict::notice, fmt::format("“parvela” links open {}.", id), remedy};
}

Diagnostic startAtLogin(const std::string& applicationId) {
    const Autostart autostart(Autostart::userFolder(), applicationId, "Parvela", {});
    return {"Start at login", Verdict::good,
            autostart.isEnabled() ? "Parvela starts when you log in." : "Parvela does not start when you log in.", ""};
}

Task<std::vector<Diagnostic>> busServices(std::string applicationId) {
    std::vector<Diagnostic> rows;
    auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
    const auto bus = co_await connecting;
    if (!bus) {
        rows.push_back(
            {"Session bus", Verdict::problem, "There is no session bus.",
             "Log in to a desktop session, or start one with “dbus-run-session”. Without it there is no keyring."});
        co_return rows;
    }
    Names known;
    auto owned = names(bus, "ListNames");
    known.owned = co_await owned;
    auto startable = names(bus, "ListActivatableNames");
    known.startable = co_await startable;
    rows.push_back(automation(known, applicationId));
    auto askingTray = tray(bus);
    auto askingKeyring = keyring(bus, known.isThere("org.freedesktop.secrets"));
    const std::string service = "org.freedesktop.Notifications";
    auto askingNotifications = notifications(bus, known.isOwned(service), known.isThere(service));
    auto trayRow = co_await askingTray;
    auto keyringRow = co_await askingKeyring;
    auto notificationsRow = co_await askingNotifications;
    rows.push_back(std::move(trayRow));
    rows.push_back(portal(known));
    rows.push_back(std::move(keyringRow));
    rows.push_back(std::move(notificationsRow));
    co_return rows;
}

}  // namespace parvela::diagnostics
