#pragma once

#include <functional>
#include <memory>

namespace parvela {

/// Mouse clicks on the bare desktop of an X11 session, which reach no program: some window managers leave even the
/// keyboard where it was. Nothing is grabbed; others get the clicks as ever.
class X11DesktopClicks {
public:
    /// Empty without an X display, or one that does not tell. The connection is its own, apart from the toolkit's.
    static std::unique_ptr<X11DesktopClicks> open();
    X11DesktopClicks(const X11DesktopClicks&) = delete;
    X11DesktopClicks& operator=(const X11DesktopClicks&) = delete;
    ~X11DesktopClicks();

    /// From now on `action` runs in the main loop for each click.
    void start(std::function<void()> action);
    void stop();

private:
    class Impl;
    explicit X11DesktopClicks(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace parvela
