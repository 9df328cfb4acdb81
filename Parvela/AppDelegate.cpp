#include "AppDelegate.h"

#include "Windows/MainWindow.h"
#include "Windows/MainWindowController.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/DeepLink.h>
#include <ParvelaKit/OAuthHandoff.h>
#include <Platform/DeviceName.h>
#include <Platform/LibsecretStore.h>
#include <Platform/SoupTransport.h>
#include <Platform/SystemClock.h>

#include <array>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

/// How long pages wait for a slow keyring to tell the device's id, before they get one for this run.
constexpr std::chrono::milliseconds devicePatience{800};

constexpr std::array<GOptionEntry, 3> options{{
    {"background", 0, 0, G_OPTION_ARG_NONE, nullptr, "Start without showing a window", nullptr},
    {"version", 0, 0, G_OPTION_ARG_NONE, nullptr, "Print the version and exit", nullptr},
    {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
}};

}  // namespace

AppDelegate::AppDelegate()
    : application_(Ref<AdwApplication>::adopt(ADW_APPLICATION(
          g_object_new(ADW_TYPE_APPLICATION, "application-id", PARVELA_APP_ID, "flags", G_APPLICATION_HANDLES_OPEN,  //
                       "resource-base-path", "/app/parvela/desktop", nullptr)))),
      paths_(XdgPaths::current()),
      defaults_(std::make_shared<JsonDefaultsStore>(JsonDefaultsStore::defaultFile())),
      secrets_(std::make_shared<LibsecretStore>()),
      notifications_(std::make_shared<NotificationCentre>()),
      device_(secrets_),
      clock_(std::make_shared<SystemClock>()),
      desktop_([this](const std::string& problem) {
          if (MainWindow* const window = windows_ ? windows_->frontWindow() : nullptr) window->showToast(problem);
      }) {
    const TokenStore tokens(secrets_, BuildInfo::keychainGroup());
    const ParvelaSession session(Preferences(defaults_), tokens, SoupTransport::shared(), clock_);
    model_ = AppModel::create(session, AppModelEnvironment{.clock = clock_,
                                                           .notifications = notifications_,
                                                           .showBadge = [](const std::optional<std::string>&) {},
                                                           .syncPush = [] {}});

    g_application_add_main_option_entries(G_APPLICATION(application_.get()), options.data());
    GApplication* const application = G_APPLICATION(application_.get());
    connections_.push_back(connect<int(GApplication*, GVariantDict*)>(
        application, "handle-local-options",
        [this](GApplication*, GVariantDict* given) { return handleLocalOptions(given); }));
    connections_.push_back(
        connect<void(GApplication*)>(application, "startup", [this](GApplication*) { didFinishLaunching(); }));
    connections_.push_back(
        connect<void(GApplication*)>(application, "activate", [this](GApplication*) { activated(); }));
    connections_.push_back(connect<void(GApplication*, GFile**, int, const char*)>(
        application, "open", [this](GApplication*, GFile** files, int count, const char*) { opened(files, count); }));
    connections_.push_back(
        connect<void(GApplication*)>(application, "shutdown", [this](GApplication*) { willTerminate(); }));
}

AppDelegate::~AppDelegate() = default;

int AppDelegate::run(int argc, char** argv) {
    return g_application_run(G_APPLICATION(application_.get()), argc, argv);
}

int AppDelegate::handleLocalOptions(GVariantDict* given) {
    if (g_variant_dict_contains(given, "version")) {
        fmt::print("Parvela {}\n", BuildInfo::version());
        return 0;
    }
    startsInBackground_ = g_variant_dict_contains(given, "background");
    if (!startsInBackground_) return -1;
    // Options do not travel to a running instance, where this start would look like a wish to see a window.
    ErrorPtr error;
    if (!g_application_register(G_APPLICATION(application_.get()), nullptr, error.out())) {
        fmt::print(stderr, "Parvela could not start: {}\n", error->message);
        return 1;
    }
    return g_application_get_is_remote(G_APPLICATION(application_.get())) ? 0 : -1;
}

void AppDelegate::didFinishLaunching() {
    // The program ends when its owner says so, not when it happens to have no window.
    g_application_hold(G_APPLICATION(application_.get()));
    windows_ = std::make_unique<WindowManager>(GTK_APPLICATION(application_.get()), model_, desktop_, clock_, paths_);
    windows_->onLastWindowClosed = [this] { lastWindowClosed(); };
    readDevice().detach();
    model_->reloadCredentials().detach();
}

/// Lives in this object, which lives until the process ends.
Task<void> AppDelegate::readDevice() {
    devicePatience_ =
        MainLoopTimer(devicePatience, [this] { windows_->setDevice(DeviceIdentity::randomId(), deviceName()); });
    auto reading = device_.id();
    const std::string id = co_await reading;
    devicePatience_.reset();
    if (windows_) windows_->setDevice(id, deviceName());
}

void AppDelegate::activated() {
    if (std::exchange(startsInBackground_, false)) return;
    windows_->showMainWindow();
}

void AppDelegate::opened(GFile** files, int count) {
    for (int index = 0; index < count; ++index) {
        const CharPtr uri(g_file_get_uri(files[index]));
        if (const auto url = Url::parse(uri.get())) handleIncoming(*url);
    }
}

void AppDelegate::handleIncoming(const Url& url) {
    const ServerConfig& server = model_->server.get();
    if (url.scheme() == "http" || url.scheme() == "https") {
        windows_->showMainWindow();
        windows_->frontController()->load(url);
        return;
    }
    if (OAuthHandoff::isCallback(url)) {
        windows_->showMainWindow();
        if (const auto completion = OAuthHandoff::completionURL(server.appURL, url)) {
            windows_->frontController()->load(*completion);
        }
        return;
    }
    const auto link = DeepLink::parse(url);
    if (const auto* const path = link ? std::get_if<DeepLink::OpenPath>(&link->action) : nullptr) {
        windows_->showMainWindow();
        windows_->frontController()->load(server.appPageAt(path->path));
    }
}

void AppDelegate::showAlert(const std::string& message, const std::string& informative) {
    MainWindow* const window = windows_->frontWindow();
    GtkWidget* const dialog = adw_message_dialog_new(window && window->isVisible() ? window->get() : nullptr,
                                                     message.c_str(), informative.c_str());
    adw_message_dialog_add_response(ADW_MESSAGE_DIALOG(dialog), "ok", "OK");
    gtk_window_present(GTK_WINDOW(dialog));
}

void AppDelegate::lastWindowClosed() {
    g_application_quit(G_APPLICATION(application_.get()));
}

void AppDelegate::willTerminate() {
    windows_.reset();
}

}  // namespace parvela
