#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace parvela {

class MainWindowController;

/// Asks the pages of several tabs, one after the other, whether they may be closed. The first one that may not ends it.
class ClosingTabs : public std::enable_shared_from_this<ClosingTabs> {
public:
    using Answer = std::function<void(bool mayClose)>;
    /// `answer` is called once, at once or later; never when the tab that is asked goes before it answers.
    static void ask(const std::vector<MainWindowController*>& tabs, Answer answer);

private:
    ClosingTabs(const std::vector<MainWindowController*>& tabs, Answer answer);
    void askNext();

    std::vector<std::weak_ptr<MainWindowController>> tabs_;
    std::size_t next_ = 0;
    Answer answer_;
};

}  // namespace parvela
