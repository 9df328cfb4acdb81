#include "Windows/LostTabDrops.h"

#include <ParvelaKit/GLibPtr.h>

#include <utility>

namespace parvela {

namespace {

/// Tabs are taken by windows of this program only, at once.
constexpr std::chrono::milliseconds patience{600};

}  // namespace

LostTabDrops::LostTabDrops(std::function<bool()> isTabUnderWay) : isTabUnderWay_(std::move(isTabUnderWay)) {
    // The tab bar keeps its drag to itself.
    g_type_class_unref(g_type_class_ref(GDK_TYPE_DRAG));
    signal_ = g_signal_lookup("drop-performed", GDK_TYPE_DRAG);
    hook_ = g_signal_add_emission_hook(
        signal_, 0,
        [](GSignalInvocationHint*, guint, const GValue* arguments, gpointer self) {
            static_cast<LostTabDrops*>(self)->dropped(GDK_DRAG(g_value_get_object(arguments)));
            return gboolean{TRUE};
        },
        this, nullptr);
}

LostTabDrops::~LostTabDrops() {
    g_signal_remove_emission_hook(signal_, hook_);
}

void LostTabDrops::dropped(GdkDrag* drag) {
    if (!isTabUnderWay_()) return;
    patience_ = MainLoopTimer(patience, [this, drag = Ref<GdkDrag>::ref(drag)] {
        if (isTabUnderWay_()) g_signal_emit_by_name(drag.get(), "cancel", GDK_DRAG_CANCEL_NO_TARGET);
    });
}

}  // namespace parvela
