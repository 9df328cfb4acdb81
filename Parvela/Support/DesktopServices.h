#pragma once

#include <ParvelaKit/Url.h>

#include <functional>
#include <string>

namespace parvela {

/// Hands URLs to other programs: pages to the default browser, others to whoever handles their scheme.
class DesktopServices {
public:
    virtual ~DesktopServices() = default;

    virtual void open(const Url& url) = 0;
};

/// Asks the desktop. Tells in one English sentence when nobody opens a URL.
class DefaultApplications : public DesktopServices {
public:
    explicit DefaultApplications(std::function<void(const std::string&)> onFailure)
        : onFailure_(std::move(onFailure)) {}

    void open(const Url& url) override;

private:
    std::function<void(const std::string&)> onFailure_;
};

}  // namespace parvela
