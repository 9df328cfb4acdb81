#pragma once

#include "Model/AppModel.h"
#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// The choice of a board: the model's boards, the default board unless the user chose another.
class BoardPicker {
public:
    BoardPicker(const Interface& interface, std::shared_ptr<AppModel> model);
    BoardPicker(const BoardPicker&) = delete;
    BoardPicker& operator=(const BoardPicker&) = delete;

    /// Id of the board that tasks go to; none when there is no board. Before the boards are known, the default board.
    std::optional<std::string> chosen() const;
    /// Its name; empty when it is not known.
    std::string name() const;

    /// Another board is chosen, by the user or because boards came or went.
    std::function<void()> onChanged;

private:
    void fill();
    void selectChosen();
    void picked();

    std::shared_ptr<AppModel> model_;
    GtkDropDown* picker_;
    std::optional<std::string> picked_;     ///< id, by the user
    std::optional<std::string> announced_;  ///< what readers were told last
    bool isFilling_ = false;
    std::vector<Connection> connections_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace parvela
