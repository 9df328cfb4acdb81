#include "RunningProgram.h"

#include <ParvelaKit/GLibPtr.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#include <fmt/format.h>
#include <gio/gio.h>

namespace parvela {

namespace {

constexpr int callTimeout = 5000;  // milliseconds
/// For a call that has to start the program first.
constexpr int startTimeout = 60'000;

/// The object path that GApplication gives an application of this id.
std::string objectPath() {
    std::string path = "/" PARVELA_APP_ID;
    std::ranges::replace(path, '.', '/');
    std::ranges::replace(path, '-', '_');
    return path;
}

/// Lets the program raise its window as if the user had clicked it.
GVariant* platformData() {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (const char* const variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        const char* const value = g_getenv(variable);
        if (!value || !g_utf8_validate(value, -1, nullptr)) continue;
        const bool token = std::string_view(variable) == "XDG_ACTIVATION_TOKEN";
        g_variant_builder_add(&builder, "{sv}", token ? "activation-token" : "desktop-startup-id",
                              g_variant_new_string(value));
    }
    return g_variant_builder_end(&builder);
}

enum class Start { allowed, never };

/// `error` gets the reason, when the bus gives one.
bool call(const char* method, GVariant* arguments, Start start, GError** error = nullptr) {
    const VariantPtr held(g_variant_ref_sink(arguments));
    const auto bus = Ref<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus) return false;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    const auto attempt = [&](GDBusCallFlags flags, int timeout, GError** reason) {
        const VariantPtr answer(g_dbus_connection_call_sync(bus.get(), PARVELA_APP_ID, objectPath().c_str(),
                                                            "org.freedesktop.Application", method, held.get(), nullptr,
                                                            flags, timeout, nullptr, reason));
        return static_cast<bool>(answer);
    };
    ErrorPtr refusal;
    if (attempt(G_DBUS_CALL_FLAGS_NO_AUTO_START, callTimeout, refusal.out())) return true;
    // One that runs and does not answer is not to be waited for any longer.
    const bool runs = !g_error_matches(refusal.get(), G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) &&
                      !g_error_matches(refusal.get(), G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN);
    if (!runs && start == Start::allowed) return attempt(G_DBUS_CALL_FLAGS_NONE, startTimeout, error);
    g_propagate_error(error, refusal.release());
    return false;
}

bool activate(const char* action, Start start, GError** error = nullptr) {
    return call("ActivateAction", g_variant_new("(sav@a{sv})", action, nullptr, platformData()), start, error);
}

bool hasDisplay() {
    for (const char* const name : {"WAYLAND_DISPLAY", "WAYLAND_SOCKET", "DISPLAY", "BROADWAY_DISPLAY"}) {
        const char* const value = g_getenv(name);
        if (value && *value) return true;
    }
    // Where Wayland is looked for when nothing is said.
    std::error_code error;
    return std::filesystem::exists(std::filesystem::path(g_get_user_runtime_dir()) / "wayland-0", error);
}

std::string unstartable(const std::string& program, int reason) {
    return fmt::format("“{}” can't be started: {}.", program, std::generic_category().message(reason));
}

}  // namespace

bool RunningProgram::open(const std::vector<std::string>& urls) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE_STRING_ARRAY);
    for (const std::string& url : urls) g_variant_builder_add(&list, "s", url.c_str());
    return call("Open", g_variant_new("(as@a{sv})", &list, platformData()), Start::allowed);
}

bool RunningProgram::showQuickAdd() {
    return activate("showQuickAdd", Start::allowed);
}

// Nobody to hear these is no failure: what they are about is read at the next start.

void RunningProgram::tellSettingsChanged() {
    (void)activate("reload-settings", Start::never);
}

void RunningProgram::tellLinesWait() {
    (void)activate("send-waiting-lines", Start::never);
}

void RunningProgram::tellTasksChanged() {
    const auto bus = Ref<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus) return;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    // Nobody waits for an answer.
    g_dbus_connection_call(bus.get(), PARVELA_APP_ID, objectPath().c_str(), "org.freedesktop.Application",
                           "ActivateAction", g_variant_new("(sav@a{sv})", "tasks-changed", nullptr, platformData()),
                           nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, callTimeout, nullptr, nullptr, nullptr);
    g_dbus_connection_flush_sync(bus.get(), nullptr, nullptr);
}

std::optional<std::string> RunningProgram::act(const std::string& action) {
    ErrorPtr error;
    if (activate(action.c_str(), Start::allowed, error.out())) return std::nullopt;
    if (g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS)) {
        return "The Parvela that runs is of another version and does not know this. Quit it and try again.";
    }
    return "Parvela does not run, and the session bus can't start it.";
}

std::optional<std::string> RunningProgram::obstacle() {
    const std::string program = siblingProgram("parvela-desktop");
    if (access(program.c_str(), X_OK) != 0) return unstartable(program, errno);
    if (!hasDisplay()) return "There is no display. Parvela's window needs a desktop session.";
    return std::nullopt;
}

std::string RunningProgram::become(const std::vector<std::string>& arguments) {
    const std::string program = siblingProgram("parvela-desktop");
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    std::fflush(stdout);
    execv(program.c_str(), argv.data());
    return unstartable(program, errno);
}

std::string siblingProgram(const std::string& name) {
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return (self.parent_path() / name).string();
}

}  // namespace parvela
