#include "PrivateBus.h"

#include <fcntl.h>
#include <fstream>
#include <signal.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace parvela::testing {

namespace {

constexpr const char* keyringName = "org.freedesktop.secrets";

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
    result.push_back(nullptr);
    return result;
}

}  // namespace

Child::Child(std::vector<std::string> arguments, const std::vector<std::string>& environment, const std::string& input,
             std::string* output) {
    int in[2];
    int out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const auto argv = pointers(arguments);
    const auto envp = pointers(environment);
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        execvpe(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    if (write(in[1], input.data(), input.size()) != static_cast<ssize_t>(input.size()))
        throw std::runtime_error("no input");
    close(in[1]);
    for (char c = 0; output && read(out[0], &c, 1) == 1 && c != '\n';) output->push_back(c);
    close(out[0]);
}

void Child::end() {
    if (process_ <= 0) return;
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

PrivateBus::PrivateBus() {
    const auto configuration = folder_.path() / "bus.conf";
    std::ofstream(configuration) << "<busconfig><type>session</type><listen>unix:path="
                                 << (folder_.path() / "bus").string()
                                 << "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                                    "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
                                    "<allow own=\"*\"/></policy></busconfig>";
    daemon_ = Child({"dbus-daemon", "--config-file=" + configuration.string(), "--nofork", "--print-address=1"},
                    environment(), "", &address_);
    if (address_.empty()) throw std::runtime_error("dbus-daemon did not start");
    setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
    ErrorPtr error;
    connection_ = Ref<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error.out()));
    if (!connection_) throw std::runtime_error(error->message);
    g_dbus_connection_set_exit_on_close(connection_.get(), FALSE);
}

std::vector<std::string> PrivateBus::environment() const {
    std::vector<std::string> result = {"PATH=" + std::string(getenv("PATH")), "LC_ALL=C.UTF-8",
                                       "DBUS_SESSION_BUS_ADDRESS=" + address_};
    for (const char* variable : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        const auto path = folder_.path() / variable;
        std::filesystem::create_directory(path);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        result.push_back(variable + ("=" + path.string()));
    }
    return result;
}

VariantPtr PrivateBus::call(const char* name, const char* path, const char* interface, const char* method,
                            GVariant* arguments) const {
    return VariantPtr(g_dbus_connection_call_sync(connection_.get(), name, path, interface, method, arguments, nullptr,
                                                  G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
}

bool PrivateBus::hasOwner(const std::string& name) const {
    const auto answer =
        call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner", g_variant_new("(s)", name.c_str()));
    gboolean owned = FALSE;
    if (answer) g_variant_get(answer.get(), "(b)", &owned);
    return owned != FALSE;
}

void PrivateBus::waitForOwner(const std::string& name, bool present) const {
    constexpr int attempts = 2000;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (hasOwner(name) == present) return;
        usleep(5000);
    }
    throw std::runtime_error(name + (present ? " did not appear" : " did not go"));
}

Ref<GDBusConnection> connectAs(const char* name) {
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    auto connection = Ref<GDBusConnection>::adopt(
        g_dbus_connection_new_for_address_sync(getenv("DBUS_SESSION_BUS_ADDRESS"), flags, nullptr, nullptr, nullptr));
    if (!connection) throw std::runtime_error("no bus");
    const VariantPtr owned(g_dbus_connection_call_sync(
        connection.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", name, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    if (!owned) throw std::runtime_error(std::string(name) + " can't be owned");
    return connection;
}

Child PrivateBus::startKeyring() const {
    Child keyring({"gnome-keyring-daemon", "--unlock", "--components=secrets", "--foreground"}, environment(),
                  "password");
    waitForOwner(keyringName, true);
    return keyring;
}

Child PrivateBus::startNotifications(const std::string& display) const {
    const auto settings = folder_.path() / "dunstrc";
    std::ofstream(settings) << "[global]\nfont = Sans 10\nmarkup = full\n[urgency_normal]\ntimeout = 0\n";
    auto variables = environment();
    variables.push_back("DISPLAY=" + display);
    Child dunst({"dunst", "-conf", settings.string()}, variables, "");
    waitForOwner("org.freedesktop.Notifications", true);
    return dunst;
}

}  // namespace parvela::testing
