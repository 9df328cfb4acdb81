#pragma once

#include "HotKeys/HotKeyCenter.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Observable.h>
#include <Platform/KeyCode.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// A button that shows a shortcut and, once pressed, takes the next keys typed as the new one. Escape alone keeps the
/// old one. Keys without Control, Alt or Super are refused with a beep.
class HotKeyRecorder {
public:
    HotKeyRecorder(std::shared_ptr<HotKeyCenter> center, HotKey key);
    HotKeyRecorder(const HotKeyRecorder&) = delete;
    HotKeyRecorder& operator=(const HotKeyRecorder&) = delete;
    ~HotKeyRecorder();

    /// To be put into a window. Lives as long as the recorder or its parent, whichever is longer.
    GtkWidget* widget() const noexcept { return GTK_WIDGET(button_.get()); }

    HotKey key() const noexcept { return key_; }
    /// Shows another shortcut, for example after the one recorded was refused.
    void setKey(HotKey key);

    bool isRecording() const noexcept { return static_cast<bool>(keyPressed_); }

    /// Called after the user recorded a shortcut.
    std::function<void(HotKey)> onChange;

private:
    void start();
    void stop();
    void typed(std::uint32_t hardwareKeycode, GdkModifierType state);
    void record(HotKey key);
    void refuse();
    void show();
    bool hasFocus() const;

    std::shared_ptr<HotKeyCenter> center_;
    HotKey key_;
    Ref<GtkButton> button_;
    std::vector<Connection> connections_;
    /// Hears the keys of the whole window before anything else does; there only while recording.
    Ref<GtkEventController> keys_;
    Connection keyPressed_;
    Subscription diversion_;
    MainLoopTimer focusPatience_;
};

}  // namespace parvela
