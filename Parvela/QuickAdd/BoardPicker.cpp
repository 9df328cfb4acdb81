#include "QuickAdd/BoardPicker.h"

#include <ParvelaKit/ShownTitle.h>

#include <algorithm>

namespace parvela {

namespace {

/// From that many boards on, typing finds one faster than looking.
constexpr std::size_t manyBoards = 12;

Ref<GtkListItemFactory> ellipsizingFactory(std::vector<Connection>& connections, int widestInCharacters) {
    const auto factory = Ref<GtkListItemFactory>::adopt(gtk_signal_list_item_factory_new());
    connections.push_back(connect<void(GtkSignalListItemFactory*, GtkListItem*)>(
        factory.get(), "setup", [widestInCharacters](GtkSignalListItemFactory*, GtkListItem* item) {
            GtkWidget* const label = gtk_label_new(nullptr);
            gtk_label_set_xalign(GTK_LABEL(label), 0);
            gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
            gtk_label_set_max_width_chars(GTK_LABEL(label), widestInCharacters);
            gtk_list_item_set_child(item, label);
        }));
    connections.push_back(connect<void(GtkSignalListItemFactory*, GtkListItem*)>(
        factory.get(), "bind", [](GtkSignalListItemFactory*, GtkListItem* item) {
            auto* const text = GTK_STRING_OBJECT(gtk_list_item_get_item(item));
            gtk_label_set_text(GTK_LABEL(gtk_list_item_get_child(item)), gtk_string_object_get_string(text));
        }));
    return factory;
}

}  // namespace

BoardPicker::BoardPicker(const Interface& interface, std::shared_ptr<AppModel> model)
    : model_(std::move(model)), picker_(interface.get<GtkDropDown>("board")) {
    gtk_drop_down_set_factory(picker_, ellipsizingFactory(connections_, 14).get());
    gtk_drop_down_set_list_factory(picker_, ellipsizingFactory(connections_, 34).get());
    GtkExpression* const text = gtk_property_expression_new(GTK_TYPE_STRING_OBJECT, nullptr, "string");
    gtk_drop_down_set_expression(picker_, text);
    gtk_expression_unref(text);
    connections_.push_back(connect<void(GtkDropDown*, GParamSpec*)>(picker_, "notify::selected",
                                                                    [this](GtkDropDown*, GParamSpec*) { picked(); }));
    subscriptions_.push_back(model_->boards.observe([this](const auto&) { fill(); }));
    subscriptions_.push_back(model_->defaultBoardID.observe([this](const auto&) { selectChosen(); }));
    fill();
}

std::optional<std::string> BoardPicker::chosen() const {
    const auto& boards = model_->boards.get();
    if (picked_ && std::ranges::find(boards, *picked_, &Board::id) != boards.end()) return picked_;
    return model_->defaultBoardID.get();
}

std::string BoardPicker::name() const {
    const auto id = chosen();
    const auto& boards = model_->boards.get();
    const auto found = id ? std::ranges::find(boards, *id, &Board::id) : boards.end();
    if (found != boards.end()) return found->name;
    return model_->session.prefs().defaultBoardName().value_or("");
}

void BoardPicker::fill() {
    const auto& boards = model_->boards.get();
    const auto names = Ref<GtkStringList>::adopt(gtk_string_list_new(nullptr));
    for (const Board& board : boards) gtk_string_list_append(names.get(), shownTitle(board.name).c_str());
    if (boards.empty()) gtk_string_list_append(names.get(), "No boards");
    isFilling_ = true;
    gtk_drop_down_set_model(picker_, G_LIST_MODEL(names.get()));
    isFilling_ = false;
    gtk_drop_down_set_enable_search(picker_, boards.size() >= manyBoards);
    gtk_widget_set_sensitive(GTK_WIDGET(picker_), !boards.empty());
    selectChosen();
}

void BoardPicker::selectChosen() {
    const auto id = chosen();
    const auto& boards = model_->boards.get();
    const auto found = id ? std::ranges::find(boards, *id, &Board::id) : boards.end();
    isFilling_ = true;
    if (found != boards.end()) gtk_drop_down_set_selected(picker_, static_cast<guint>(found - boards.begin()));
    isFilling_ = false;
    // The button in it is what takes the keyboard, and GTK gives it no name.
    const std::string label = found == boards.end() ? "Board" : "Board: " + shortened(found->name, 100);
    gtk_accessible_update_property(GTK_ACCESSIBLE(gtk_widget_get_first_child(GTK_WIDGET(picker_))),
                                   GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
    if (announced_ == id) return;
    announced_ = id;
    if (onChanged) onChanged();
}

void BoardPicker::picked() {
    if (isFilling_) return;
    const auto& boards = model_->boards.get();
    const guint index = gtk_drop_down_get_selected(picker_);
    if (index >= boards.size()) return;
    picked_ = boards[index].id;
    selectChosen();
}

}  // namespace parvela
