#pragma once

#include <ParvelaKit/KeyValueStore.h>
#include <ParvelaKit/QuickAddSession.h>

namespace parvela {

/// What is typed into the quick-add field and not added yet, kept across launches in the preference "quickAddDraft".
struct QuickAddDrafts {
    /// Empty when there is none, or when what is stored makes no sense.
    static QuickAddSession::Draft read(const KeyValueStore& store);
    /// An empty draft leaves nothing behind.
    static void write(KeyValueStore& store, const QuickAddSession::Draft& draft);
};

}  // namespace parvela
