#include "AppDelegate.h"

#include "Support/EarlyApplication.h"
#include "Support/InstalledFiles.h"
#include "Support/ProxyExceptions.h"
#include "Support/RendererChoice.h"
#include "Windows/MainWindow.h"
#include "Windows/MainWindowController.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/ShownTitle.h>
#include <Platform/DeviceName.h>
#include <Platform/LibsecretStore.h>
#include <Platform/SoupTransport.h>
#include <Platform/SystemClock.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>
#include <glib-unix.h>

namespace parvela {

namespace {

/// How long pages wait for a slow keyring to tell the device's id, before they get one for this run.
constexpr std::chrono::milliseconds devicePatience{800};

/// A panel that starts anew shows the tray again within this time.
constexpr std::chrono::seconds trayPatience{5};

// In user-perceived characters.
constexpr std::size_t longestAlertTitle = 200;
constexpr std::size_t longestAlertText = 1000;

constexpr std::array<GOptionEntry, 5> options{{
    {"background", 0, 0, G_OPTION_ARG_NONE, nullptr, "Start without showing a window", nullptr},
    {"new-task", 0, 0, G_OPTION_ARG_NONE, nullptr, "Open the form for a new task", nullptr},
    {"new-window", 0, 0, G_OPTION_ARG_NONE, nullptr, "Open a new window", nullptr},
    {"version", 0, 0, G_OPTION_ARG_NONE, nullptr, "Print the version and exit", nullptr},
    {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr},
}};

}  // namespace

AppDelegate::AppDelegate(std::optional<UpdateFeed> updates)
    : application_(makeEarlyApplication(PARVELA_APP_ID, G_APPLICATION_HANDLES_OPEN, "/app/parvela/desktop",
                                        [this] { willFinishLaunching(); })),
      paths_(XdgPaths::current()),
      defaults_(std::make_shared<JsonDefaultsStore>(
          JsonDefaultsStore::defaultFile(),
          // The last try comes when the windows have gone.
          [this](const std::string& problem) { runSoon([this, problem] { showToast(problem); }); })),
      secrets_(std::make_shared<LibsecretStore>()),
      notifications_(std::make_shared<NotificationCentre>()),
      device_(secrets_),
      clock_(std::make_shared<SystemClock>()),
      desktop_([this](const std::string& problem) { showToast(problem); }),
      updateFeed_(std::move(updates)) {
    const TokenStore tokens(secrets_, BuildInfo::keychainGroup());
    const ParvelaSession session(Preferences(defaults_), tokens, SoupTransport::shared(), clock_);
    model_ = AppModel::create(session, AppModelEnvironment{.clock = clock_,
                                                           .notifications = notifications_,
                                                           .showBadge =
                                                               [this](const std::optional<std::string>& label) {
                                                                   if (presence_) presence_->showBadge(label);
                                                               },
                                                           .syncPush = [this] { push_->sync().detach(); }});
    push_ = std::make_shared<PushRegistrar>(session, PushRegistrar::Program{.bundleId = PARVELA_APP_ID});
    connectApplication();
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::connectApplication() {
    g_application_add_main_option_entries(G_APPLICATION(application_.get()), options.data());
    g_application_set_option_context_parameter_string(G_APPLICATION(application_.get()), "[URL…]");
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
    // The desktop's session ends, or a service manager stops the program: what there is to save is saved.
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        g_unix_signal_add(
            signal,
            [](gpointer ending) -> gboolean {
                g_application_quit(static_cast<GApplication*>(ending));
                return G_SOURCE_CONTINUE;
            },
            application);
    }
    connections_.push_back(
        connect<void(GApplication*)>(application, "shutdown", [this](GApplication*) { willTerminate(); }));
}

int AppDelegate::run(int argc, char** argv) {
    const bool safe = Preferences(defaults_).safeRenderer() || !hasRenderNode();
    exceptLoopbackFromProxies();
    applyRenderer(safe ? Renderer::safe : Renderer::accelerated);
    automation_ = std::make_unique<AutomationHost>();
    const int status = g_application_run(G_APPLICATION(application_.get()), argc, argv);
    if (!startsAgain_) return status;
    const std::string program = (programFolder() / "parvela-desktop").string();
    execl(program.c_str(), program.c_str(), nullptr);
    return status;
}

int AppDelegate::handleLocalOptions(GVariantDict* given) {
    if (g_variant_dict_contains(given, "version")) {
        fmt::print("Parvela {}\n", BuildInfo::version());
        return 0;
    }
    startsInBackground_ = g_variant_dict_contains(given, "background");
    startsWithNewTask_ = g_variant_dict_contains(given, "new-task");
    const bool newWindow = g_variant_dict_contains(given, "new-window");
    if (!startsInBackground_ && !startsWithNewTask_ && !newWindow) return -1;
    // Options do not travel to a running instance, where this start would look like a wish to see a window.
    ErrorPtr error;
    if (!g_application_register(G_APPLICATION(application_.get()), nullptr, error.out())) {
        fmt::print(stderr, "Parvela could not start: {}\n", error->message);
        return 1;
    }
    if (!g_application_get_is_remote(G_APPLICATION(application_.get()))) return -1;
    if (!startsInBackground_) {
        g_action_group_activate_action(G_ACTION_GROUP(application_.get()), startsWithNewTask_ ? "newTask" : "newWindow",
                                       nullptr);
        g_dbus_connection_flush_sync(g_application_get_dbus_connection(G_APPLICATION(application_.get())), nullptr,
                                     nullptr);
    }
    return 0;
}

void AppDelegate::willFinishLaunching() {
    // The program ends when its owner says so, not when it happens to have no window.
    g_application_hold(G_APPLICATION(application_.get()));
    // Nor when the session's bus goes: the windows work without it.
    if (GDBusConnection* const bus = g_application_get_dbus_connection(G_APPLICATION(application_.get()))) {
        g_dbus_connection_set_exit_on_close(bus, FALSE);
    } else {
        // WebKit ends the program when it is to lead its processes to a bus that is not there.
        setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    }
    accessibleWindows_.emplace();
    windows_ = std::make_unique<WindowManager>(GTK_APPLICATION(application_.get()), model_, desktop_, notifications_,
                                               clock_, paths_);
    if (!drawsSafely()) windows_->onNothingDrawn = [this] { offerSafeRenderer(); };
    readDevice().detach();
    const bool showsNothing = startsInBackground_ || AutomationHost::isService(G_APPLICATION(application_.get()));
    windows_->prepare(showsNothing ? WindowManager::Show::later : WindowManager::Show::now);
}

void AppDelegate::didFinishLaunching() {
    plainEdges_.emplace(gdk_display_get_default());
    windows_->onBoardsChanged = [this] {
        const auto* const tab = windows_->frontController();
        menu_->setBoards(tab ? tab->boards() : std::vector<BoardRef>{});
    };
    windows_->web().onFailure([this](const std::string& problem) { showAlert("Pages can't be shown", problem); });
    windows_->onLastWindowClosed = [this] { lastWindowClosed(); };
    windows_->downloads().notify = [this](const UserNotification& notification) { notify(notification); };
    windows_->onQuickAdd = [this] { showQuickAdd(); };
    waitingLines_ =
        std::make_shared<WaitingLines>(model_, clock_, [this](const std::string& report) { showToast(report); });
    startStatusItem();
    addActions();
    addUpdates();
    menu_ = std::make_unique<MainMenu>(GTK_APPLICATION(application_.get()));
    windows_->setMenu(menu_->model());
    router_ = std::make_shared<URLRouter>(
        model_, *windows_, waitingLines_,
        URLRouterSurfaces{.showAlert = [this](const std::string& message,
                                              const std::string& informative) { showAlert(message, informative); },
                          .showQuickAdd = [this] { showQuickAdd(); },
                          .showSettings = [this] { showSettings(SettingsPage::account); },
                          .notify = [this](UserNotification notification) { notify(std::move(notification)); }});
    presence_ =
        std::make_unique<DesktopPresence>(G_APPLICATION(application_.get()), model_, clock_, *notifications_, *windows_,
                                          router_, [this](const std::string& text) { showToast(text); });
    openURL_ = notifications_->openURL.observe([this](const DeepLinkTarget& target) { router_->open(target); });
    showQuickAdd_ = notifications_->showQuickAdd.observe([this] { showQuickAdd(); });
    startHotKey();
    presence_->startSummary();
    openAutomation();
    windows_->restore();
    linkChanged_ = notifications_->linkChanged.observe([this] {
        waitingLines_->renewClient().detach();
        // Storing the token may have unlocked the keyring.
        keepDevice().detach();
    });
    serverChanged_ = model_->serverRevision.observe([this](auto) { waitingLines_->renewClient().detach(); });
    readCredentials().detach();
    if (updates_) updates_->start();
    if (defaults_->warning()) showToast(*defaults_->warning());
}

void AppDelegate::startStatusItem() {
    statusItem_ = std::make_unique<StatusItemController>(
        GTK_APPLICATION(application_.get()), model_, clock_,
        QuickAddPopoverActions{
            .openMainWindow = [this] { windows_->showMainWindow(); },
            .showSettings = [this] { showSettings(); },
            .stopTimer = [this] { notifications_->stopTimer.post(); },
            .requestLink = [this] { requestLink(); },
            .openTask = [this](const TaskSummary& task) { router_->loadInFront(router_->pageOf(task)); },
            .quit = [this] { quit(); },
            .waitingLines = waitingLines_});
    trayChanged_ = statusItem_->isInTray().observe([this](bool) { trayChanged(); });
}

/// Hidden windows come back within reach when the tray from which they could be called has gone for good.
void AppDelegate::trayChanged() {
    trayPatience_.reset();
    if (isReachableWithoutWindow()) return;
    trayPatience_ = MainLoopTimer(trayPatience, [this] {
        for (const auto& window : windows_->windows()) {
            if (window->isVisible()) continue;
            gtk_window_minimize(window->get());
            gtk_widget_set_visible(GTK_WIDGET(window->get()), TRUE);
        }
    });
}

void AppDelegate::startHotKey() {
    auto center = std::make_shared<HotKeyCenter>(HotKeyFacility::forDisplay(gdk_display_get_default()));
    hotKey_ = std::make_shared<QuickAddHotKey>(
        std::move(center), model_->session.prefs(),
        [this](const std::optional<std::string>& token) { statusItem_->togglePopover(token); });
    hotKeyShown_ = hotKey_->accelerator.observe([this](const std::string& keys) { menu_->setQuickAddKeys(keys); });
    hotKey_->apply().detach();
}

void AppDelegate::openAutomation() {
    AutomationSurfaces surfaces{
        .openURL = [this](const Url& url) { router_->loadInFront(url); },
        .notify =
            [this](const std::string& title, const std::string& body, const std::optional<Url>& page) {
                notify({.title = title,
                        .body = body,
                        .identifier = "automation",
                        .target = page ? std::optional(DeepLinkTarget{DeepLinkTarget::Link{*page}}) : std::nullopt});
            },
        .showAlert = [this](const std::string& message,
                            const std::string& informative) { showAlert(message, informative); }};
    automation_->open({.application = G_APPLICATION(application_.get()),
                       .model = model_,
                       .notifications = notifications_,
                       .queue = &waitingLines_->queue(),
                       .surfaces = std::move(surfaces),
                       .showQuickAdd = [this] { showQuickAdd(); },
                       .frontWindow = [this] { return visibleWindow(); },
                       .isReachable = [this] { return isReachableWithoutWindow(); }});
}

Task<void> AppDelegate::readCredentials() {
    auto reading = model_->reloadCredentials();
    co_await reading;
    if (model_->hasToken.get()) {
        model_->refreshAll().detach();
        push_->sync().detach();
    }
    if (waitingLines_) waitingLines_->renewClient().detach();
}

/// Settings and token may have been changed by the "parvela" command.
Task<void> AppDelegate::readSettings() {
    auto switching = model_->setServer(model_->session.server());
    co_await switching;
    auto reading = readCredentials();
    co_await reading;
}

void AppDelegate::addAction(const char* name, std::function<void()> handler) {
    const auto action = Ref<GSimpleAction>::adopt(g_simple_action_new(name, nullptr));
    connections_.push_back(connect<void(GSimpleAction*, GVariant*)>(
        action.get(), "activate", [handler = std::move(handler)](GSimpleAction*, GVariant*) { handler(); }));
    g_action_map_add_action(G_ACTION_MAP(application_.get()), G_ACTION(action.get()));
}

void AppDelegate::addActions() {
    addAction("reload-settings", [this] { readSettings().detach(); });
    addAction("send-waiting-lines", [this] { waitingLines_->tryNow(); });
    addAction("tasks-changed", [this] { model_->tasksChanged(); });
    addAction("about", [this] { showAbout(); });
    addAction("showSettings", [this] { showSettings(); });
    addAction("showQuickAdd", [this] { showQuickAdd(); });
    addAction("newTask", [this] { newTask(); });
    // The names by which launchers activate them over the bus.
    addAction("new-task", [this] { newTask(); });
    addAction("new-window", [this] { windows_->openWindow(); });
    addAction("newWindow", [this] { windows_->openWindow(); });
    addAction("showMainWindow", [this] { windows_->showMainWindow(); });
    addAction("arrangeInFront", [this] { windows_->presentAll(); });
    addAction("hide", [this] { hide(); });
    addAction("openHelp", [this] { openPath("/settings/developers"); });
    addAction("quit", [this] { quit(); });
}

/// Unless a page holds something unsaved that its user wants to keep.
void AppDelegate::quit() {
    windows_->askToCloseAll([this] { g_application_quit(G_APPLICATION(application_.get())); });
}

/// Without a feed there is no action, and without the action no menu item.
void AppDelegate::addUpdates() {
    auto current = AppVersion::parse(BuildInfo::version());
    if (!updateFeed_ || !current) return;
    SoupTransport::Limits limits;
    limits.body = appcast::maximumSize;
    const auto updater = std::make_shared<AppcastUpdater>(*updateFeed_, *current, Transport(SoupTransport(limits)),
                                                          Preferences(defaults_), clock_);
    updates_ = std::make_shared<UpdateController>(
        updater, std::move(*current), desktop_,
        UpdateSurfaces{.visibleWindow = [this] { return visibleWindow(); },
                       .remark = [this](const std::string& text) { showToast(text); }});
    addAction("checkForUpdates", [this] { updates_->checkNow(); });
    connections_.push_back(connect<void(GObject*, GParamSpec*)>(application_.get(), "notify::active-window",
                                                                [this](GObject*, GParamSpec*) {
                                                                    if (updates_) updates_->windowBecameActive();
                                                                }));
}

GtkWindow* AppDelegate::visibleWindow() const {
    MainWindow* const window = windows_->frontWindow();
    return window && window->isVisible() ? window->get() : nullptr;
}

void AppDelegate::newTask() {
    windows_->newTaskInFront();
}

void AppDelegate::hide() {
    // Without a place from which to call them back, windows stay within reach.
    for (const auto& window : windows_->windows()) {
        if (isReachableWithoutWindow()) {
            gtk_widget_set_visible(GTK_WIDGET(window->get()), FALSE);
        } else {
            gtk_window_minimize(window->get());
        }
    }
}

void AppDelegate::showAbout() {
    MainWindow* const window = windows_->frontWindow();
    adw_show_about_window(window ? window->get() : nullptr,  //
                          "application-name", "Parvela", "application-icon", PARVELA_APP_ID, "developer-name",
                          "The Parvela authors", "version", std::string(BuildInfo::version()).c_str(), "license-type",
                          GTK_LICENSE_MIT_X11, "comments", "The task board, native on the desktop.", nullptr);
}

void AppDelegate::showSettings(std::optional<SettingsPage> page) {
    if (!settings_) {
        settings_ = std::make_unique<SettingsView>(GTK_APPLICATION(application_.get()), settingsEnvironment());
        settings_->onClosed = [this] { settingsClosed(); };
    }
    settings_->show(page);
}

SettingsEnvironment AppDelegate::settingsEnvironment() {
    return {.model = model_,
            .notifications = notifications_,
            .secrets = secrets_,
            .transport = SoupTransport::shared(),
            .hotKey = hotKey_,
            .isInTray = &statusItem_->isInTray(),
            .requestLink = [this] { requestLink(); },
            .openPage = [this](const std::string& path) { openPath(path); },
            .setZoom = [this](double zoom) { windows_->setZoomEverywhere(zoom); },
            .setSpellChecking = [this](const SpellChecking& checking) { windows_->web().setSpellChecking(checking); },
            .summaryChanged = [this] { presence_->summaryChanged(); },
            .sendSummary = [this] { return presence_->sendSummary(); },
            .notificationAccess = &presence_->notificationAccess(),
            .queueStatus = [this] { return waitingLines_->queue().status().get(); }};
}

void AppDelegate::openPath(const std::string& path) {
    windows_->showMainWindow();
    if (auto* const tab = windows_->frontController()) tab->openPath(path);
}

void AppDelegate::showQuickAdd() {
    statusItem_->showPopover(StatusItemController::Focus::field);
}

void AppDelegate::requestLink() {
    windows_->showMainWindow();
    if (auto* const tab = windows_->frontController()) tab->tell(NativeBridge::RequestLink{});
}

void AppDelegate::notify(UserNotification notification) {
    presence_->notify(std::move(notification));
}

void AppDelegate::showToast(const std::string& text) {
    if (settings_ && settings_->isActive()) {
        settings_->showToast(text);
    } else if (MainWindow* const window = windows_ ? windows_->frontWindow() : nullptr) {
        window->showToast(text);
    }
}

/// Lives in this object, which lives until the process ends.
Task<void> AppDelegate::readDevice() {
    devicePatience_ =
        MainLoopTimer(devicePatience, [this] { windows_->setDevice(DeviceIdentity::randomId(), deviceName()); });
    auto keeping = keepDevice();
    co_await keeping;
    devicePatience_.reset();
}

Task<void> AppDelegate::keepDevice() {
    auto reading = device_.id();
    const std::string id = co_await reading;
    if (windows_) windows_->setDevice(id, deviceName());
}

void AppDelegate::activated() {
    // The first activation belongs to the start itself, which has shown what it should.
    if (!std::exchange(startsInBackground_, false)) windows_->showMainWindow();
    if (std::exchange(startsWithNewTask_, false)) newTask();
}

void AppDelegate::opened(GFile** files, int count) {
    startsInBackground_ = false;
    for (int index = 0; index < count; ++index) {
        const CharPtr uri(g_file_get_uri(files[index]));
        // Bare words and local files come as file URLs, which the router ignores.
        if (const auto url = Url::parse(uri.get())) router_->open(*url);
    }
}

/// Links and services can make it say anything, as often as they like.
void AppDelegate::showAlert(const std::string& message, const std::string& informative) {
    if (alert_) gtk_window_destroy(GTK_WINDOW(alert_));
    GtkWidget* const dialog = adw_message_dialog_new(visibleWindow(), shortened(message, longestAlertTitle).c_str(),
                                                     shortened(informative, longestAlertText).c_str());
    adw_message_dialog_add_response(ADW_MESSAGE_DIALOG(dialog), "ok", "OK");
    alert_ = dialog;
    alertGone_ = connect<void(GtkWidget*)>(dialog, "destroy", [this](GtkWidget*) { alert_ = nullptr; });
    gtk_window_present(GTK_WINDOW(dialog));
}

void AppDelegate::lastWindowClosed() {
    endsWithSettings_ = settings_ && settings_->isVisible();
    if (!endsWithSettings_ && !isReachableWithoutWindow()) g_application_quit(G_APPLICATION(application_.get()));
}

/// The last main window may have been closed before.
void AppDelegate::settingsClosed() {
    if (std::exchange(endsWithSettings_, false) && windows_->windows().empty()) lastWindowClosed();
}

/// What GTK draws is still seen when what the web engine draws is not.
void AppDelegate::offerSafeRenderer() {
    MainWindow* const window = windows_->frontWindow();
    GtkWidget* const shown = adw_message_dialog_new(
        window ? window->get() : nullptr, "The page isn't being drawn",
        "The graphics driver may be the reason. Parvela can start again and draw without it; your windows come back.");
    AdwMessageDialog* const dialog = ADW_MESSAGE_DIALOG(shown);
    adw_message_dialog_add_responses(dialog, "later", "Not Now", "restart", "Start Again", nullptr);
    adw_message_dialog_set_default_response(dialog, "restart");
    adw_message_dialog_set_close_response(dialog, "later");
    connections_.push_back(connect<void(AdwMessageDialog*, const char*)>(
        dialog, "response", [this](AdwMessageDialog*, const char* response) {
            if (std::string_view(response) != "restart") return;
            Preferences(defaults_).setSafeRenderer(true);
            startsAgain_ = true;
            g_application_quit(G_APPLICATION(application_.get()));
        }));
    gtk_window_present(GTK_WINDOW(shown));
}

void AppDelegate::willTerminate() {
    if (!windows_) return;  // this start only handed its URLs to the running instance
    windows_->saveNow();
    automation_.reset();
    linkChanged_ = {};
    serverChanged_ = {};
    settings_.reset();
    presence_.reset();
    hotKey_.reset();
    statusItem_.reset();
    updates_.reset();
    waitingLines_.reset();
    router_.reset();
    windows_.reset();
    accessibleWindows_.reset();
    plainEdges_.reset();
}

}  // namespace parvela
