#include "QuickAdd/QuickAddField.h"

#include "QuickAdd/TokenLook.h"

#include <ParvelaKit/TextOffsets.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include <adwaita.h>

namespace parvela {

namespace {

using AttributesPtr = GLibPtr<PangoAttrList, pango_attr_list_unref>;

/// How opaque the ground behind a piece is, of 65535.
constexpr guint16 groundAlpha = 0x2E00;

void add(PangoAttrList* list, PangoAttribute* attribute, guint start, guint end) {
    attribute->start_index = start;
    attribute->end_index = end;
    pango_attr_list_insert(list, attribute);
}

std::size_t commonPrefix(std::string_view a, std::string_view b) {
    const auto pair = std::ranges::mismatch(a, b);
    auto length = static_cast<std::size_t>(pair.in1 - a.begin());
    // Back to the start of a character.
    while (length > 0 &&
           ((length < a.size() && (a[length] & 0xC0) == 0x80) || (length < b.size() && (b[length] & 0xC0) == 0x80))) {
        --length;
    }
    return length;
}

/// Where the caret stands after an edit, in bytes. The field reports typed text before it moves the caret behind it.
std::size_t caretAfter(std::string_view before, std::string_view after, std::size_t reported) {
    if (after.size() <= before.size()) return reported;
    const std::size_t moved = reported + (after.size() - before.size());
    const bool isInsertion = reported <= before.size() && before.substr(0, reported) == after.substr(0, reported) &&
                             before.substr(reported) == after.substr(moved);
    return isInsertion ? moved : reported;
}

int characters(std::string_view text) {
    return static_cast<int>(g_utf8_strlen(text.data(), static_cast<gssize>(text.size())));
}

}  // namespace

QuickAddField::QuickAddField(const Interface& interface, QuickAddSession& session)
    : session_(session),
      entry_(interface.get<GtkEntry>("field")),
      text_(GTK_EDITABLE(entry_)),
      completions_(interface, GTK_WIDGET(entry_)) {
    connections_.push_back(connect<void(GtkEditable*)>(entry_, "changed", [this](GtkEditable*) { edited(); }));
    connections_.push_back(connect<void(GtkEditable*, GParamSpec*)>(
        entry_, "notify::cursor-position", [this](GtkEditable*, GParamSpec*) { caretMoved(); }));
    connections_.push_back(connect<void(GtkEntry*)>(entry_, "activate", [this](GtkEntry*) { onSubmit(Submit::stay); }));
    GtkEditable* const inner = gtk_editable_get_delegate(text_);
    connections_.push_back(connect<void(GtkText*, const char*)>(
        inner, "preedit-changed", [this](GtkText*, const char* preedit) { isComposing_ = preedit && *preedit; }));
    GtkEventController* const keys = gtk_event_controller_key_new();
    connections_.push_back(connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
        keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) {
            return keyPressed(key, modifiers);
        }));
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    gtk_widget_add_controller(GTK_WIDGET(entry_), keys);
    GtkEventController* const focus = gtk_event_controller_focus_new();
    connections_.push_back(connect<void(GtkEventControllerFocus*)>(
        focus, "leave", [this](GtkEventControllerFocus*) { completions_.hide(); }));
    connections_.push_back(connect<void(GtkEventControllerFocus*)>(focus, "enter", [this](GtkEventControllerFocus*) {
        completions_.show(session_.completions(), session_.selectedCompletion());
    }));
    gtk_widget_add_controller(GTK_WIDGET(entry_), focus);
    completions_.onChosen = [this](std::size_t index) {
        session_.choose(index);
        onChanged();
    };
    connections_.push_back(connect<void(AdwStyleManager*, GParamSpec*)>(
        adw_style_manager_get_default(), "notify::dark", [this](AdwStyleManager*, GParamSpec*) { highlight(); }));
}

gboolean QuickAddField::keyPressed(guint key, GdkModifierType modifiers) {
    using Key = QuickAddSession::Key;
    if (isComposing_) return FALSE;
    const auto held = modifiers & gtk_accelerator_get_default_mod_mask();
    if (held == GDK_CONTROL_MASK && (key == GDK_KEY_Return || key == GDK_KEY_KP_Enter)) {
        onSubmit(Submit::close);
        return TRUE;
    }
    auto handled = QuickAddSession::Handled::no;
    if (held == GDK_CONTROL_MASK && (key == GDK_KEY_l || key == GDK_KEY_L)) {
        (void)session_.toggleAtCaret();
        handled = QuickAddSession::Handled::yes;  // nothing else may happen at this key
    } else if (held == 0) {
        if (key == GDK_KEY_Down || key == GDK_KEY_KP_Down) handled = session_.press(Key::down);
        if (key == GDK_KEY_Up || key == GDK_KEY_KP_Up) handled = session_.press(Key::up);
        if (key == GDK_KEY_Escape) handled = session_.press(Key::escape);
    }
    if (handled == QuickAddSession::Handled::no) return FALSE;
    onChanged();
    return TRUE;
}

void QuickAddField::edited() {
    if (isShowing_) return;
    const std::string text = gtk_editable_get_text(text_);
    const auto reported = static_cast<std::size_t>(
        g_utf8_offset_to_pointer(text.c_str(), gtk_editable_get_position(text_)) - text.c_str());
    const std::size_t caret = caretAfter(session_.text(), text, reported);
    session_.edit(text, TextOffsets(text).utf16AtByte(caret));
    onChanged();
}

void QuickAddField::caretMoved() {
    if (isShowing_) return;
    const bool hadNames = !session_.completions().empty();
    const auto caret = static_cast<std::size_t>(gtk_editable_get_position(text_));
    if (session_.text() != gtk_editable_get_text(text_)) return;  // in the middle of an edit
    session_.moveCaret(TextOffsets(session_.text()).utf16AtCharacter(caret));
    if (hadNames && session_.completions().empty()) completions_.hide();
}

void QuickAddField::focus() {
    gtk_entry_grab_focus_without_selecting(entry_);
}

void QuickAddField::selectNothing() {
    const int caret = gtk_editable_get_position(text_);
    gtk_editable_select_region(text_, caret, caret);
}

void QuickAddField::reset() {
    gtk_editable_set_enable_undo(text_, FALSE);
    update();
    gtk_editable_set_enable_undo(text_, TRUE);
}

void QuickAddField::update() {
    showText();
    highlight();
    completions_.show(session_.completions(), session_.selectedCompletion());
}

/// Changes no more of the field's text than differs, so that undo stays usable.
void QuickAddField::showText() {
    const std::string shown = gtk_editable_get_text(text_);
    const std::string& wanted = session_.text();
    if (shown == wanted) return;
    isShowing_ = true;
    const std::size_t prefix = commonPrefix(shown, wanted);
    const std::string_view old = std::string_view(shown).substr(prefix);
    const std::string_view added = std::string_view(wanted).substr(prefix);
    int position = characters(std::string_view(shown).substr(0, prefix));
    if (!old.empty()) gtk_editable_delete_text(text_, position, -1);
    if (!added.empty()) gtk_editable_insert_text(text_, added.data(), static_cast<int>(added.size()), &position);
    gtk_editable_set_position(text_, static_cast<int>(TextOffsets(wanted).characterAtUtf16(session_.caret())));
    isShowing_ = false;
}

void QuickAddField::highlight() {
    const bool isDark = adw_style_manager_get_dark(adw_style_manager_get_default());
    const TextOffsets offsets(session_.text());
    AttributesPtr list(pango_attr_list_new());
    for (const QuickAddToken& token : session_.tokens()) {
        const auto start = static_cast<guint>(offsets.byteAtUtf16(token.start));
        const auto end = static_cast<guint>(offsets.byteAtUtf16(token.end));
        const TokenLook look = lookOf(token.kind);
        PangoColor color;
        pango_color_parse(&color, isDark ? look.darkColor : look.color);
        add(list.get(), pango_attr_foreground_new(color.red, color.green, color.blue), start, end);
        pango_color_parse(&color, look.ground);
        add(list.get(), pango_attr_background_new(color.red, color.green, color.blue), start, end);
        add(list.get(), pango_attr_background_alpha_new(groundAlpha), start, end);
    }
    // A field that was given attributes measures itself and its window anew.
    CharPtr text(pango_attr_list_to_string(list.get()));
    if (highlighted_ == text.get()) return;
    highlighted_ = text.get();
    gtk_entry_set_attributes(entry_, list.get());
}

}  // namespace parvela
