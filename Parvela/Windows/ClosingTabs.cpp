#include "Windows/ClosingTabs.h"

#include "Windows/MainWindowController.h"

#include <utility>

namespace parvela {

ClosingTabs::ClosingTabs(const std::vector<MainWindowController*>& tabs, Answer answer) : answer_(std::move(answer)) {
    for (auto* const tab : tabs) tabs_.push_back(tab->weak_from_this());
}

void ClosingTabs::ask(const std::vector<MainWindowController*>& tabs, Answer answer) {
    const std::shared_ptr<ClosingTabs> question(new ClosingTabs(tabs, std::move(answer)));
    question->askNext();
}

void ClosingTabs::askNext() {
    std::shared_ptr<MainWindowController> tab;
    while (!tab && next_ < tabs_.size()) tab = tabs_[next_++].lock();
    if (!tab) {
        answer_(true);
        return;
    }
    tab->askToClose([self = shared_from_this()](bool mayClose) {
        if (mayClose) {
            self->askNext();
        } else {
            self->answer_(false);
        }
    });
}

}  // namespace parvela
