#include "QuickAdd/TokenChips.h"

#include "QuickAdd/TokenLook.h"
#include "Support/WrapLayout.h"

#include <ParvelaKit/ShownTitle.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr std::size_t longestText = 40;
constexpr int spacing = 6;

}  // namespace

TokenChips::TokenChips(const Interface& interface, QuickAddSession& session)
    : session_(session), box_(interface.get<GtkWidget>("chips")), scroll_(interface.get<GtkWidget>("chipsScroll")) {
    useWrapLayout(box_, spacing);
}

void TokenChips::update() {
    pieces_.clear();
    for (std::size_t i = 0; i < session_.tokens().size(); ++i) pieces_.push_back({Piece::Kind::token, i});
    for (std::size_t i = 0; i < session_.literals().size(); ++i) pieces_.push_back({Piece::Kind::literal, i});
    std::ranges::sort(pieces_, {}, [this](const Piece& piece) {
        return piece.kind == Piece::Kind::token ? session_.tokens()[piece.index].start
                                                : session_.literals()[piece.index].start;
    });
    while (buttons_.size() < pieces_.size()) addButton();
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        if (i < pieces_.size()) show(buttons_[i], chipFor(pieces_[i]));
        gtk_widget_set_visible(buttons_[i].button, i < pieces_.size());
    }
    gtk_widget_set_visible(scroll_, !pieces_.empty());
}

TokenChips::Chip TokenChips::chipFor(const Piece& piece) const {
    if (piece.kind == Piece::Kind::token) {
        const QuickAddToken& token = session_.tokens()[piece.index];
        const TokenLook look = lookOf(token.kind);
        const std::string text = shortened(token.display, longestText);
        return {std::string(QuickAdd::kindName(token.kind)), look.icon, shownTitle(text),
                fmt::format("{}: {}", look.name, text), "Keep as plain text (Ctrl+L at the cursor)"};
    }
    const QuickAddRange& range = session_.literals()[piece.index];
    const std::u16string line = toUtf16(session_.text());
    const std::string text = shortened(toUtf8(line.substr(range.start, range.end - range.start)), longestText);
    return {"literal", "edit-clear-symbolic", shownTitle(text), fmt::format("Plain text: {}", text),
            "Recognise again (Ctrl+L at the cursor)"};
}

void TokenChips::addButton() {
    GtkWidget* const content = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 5);
    GtkWidget* const icon = gtk_image_new();
    gtk_image_set_pixel_size(GTK_IMAGE(icon), 12);
    GtkWidget* const label = gtk_label_new(nullptr);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_label_set_max_width_chars(GTK_LABEL(label), 28);
    gtk_box_append(GTK_BOX(content), icon);
    gtk_box_append(GTK_BOX(content), label);
    GtkWidget* const button = gtk_button_new();
    gtk_button_set_child(GTK_BUTTON(button), content);
    gtk_widget_add_css_class(button, "quick-add-chip");
    // A click leaves the keyboard in the field.
    gtk_widget_set_focus_on_click(button, FALSE);
    gtk_box_append(GTK_BOX(box_), button);
    const std::size_t index = buttons_.size();
    buttons_.push_back({button,
                        GTK_IMAGE(icon),
                        GTK_LABEL(label),
                        {},
                        connect<void(GtkButton*)>(button, "clicked", [this, index](GtkButton*) { pressed(index); })});
}

void TokenChips::show(Button& button, Chip chip) {
    if (button.shown == chip) return;
    if (!button.shown.style.empty()) gtk_widget_remove_css_class(button.button, button.shown.style.c_str());
    gtk_widget_add_css_class(button.button, chip.style.c_str());
    gtk_image_set_from_icon_name(button.icon, chip.icon);
    gtk_label_set_text(button.label, chip.text.c_str());
    gtk_widget_set_tooltip_text(button.button, chip.help.c_str());
    gtk_accessible_update_property(GTK_ACCESSIBLE(button.button), GTK_ACCESSIBLE_PROPERTY_LABEL, chip.name.c_str(),
                                   GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, chip.help.c_str(), -1);
    button.shown = std::move(chip);
}

void TokenChips::pressed(std::size_t index) {
    if (index >= pieces_.size()) return;
    const Piece piece = pieces_[index];
    if (piece.kind == Piece::Kind::token) {
        session_.giveBack(piece.index);
    } else {
        session_.takeAgain(piece.index);
    }
    onChanged();
}

}  // namespace parvela
