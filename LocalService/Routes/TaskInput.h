#pragma once

#include "Domain/TaskActions.h"
#include "Routes/BodyReader.h"

namespace parvela::service {

inline constexpr Text taskTitleText = Text::line(500);
inline constexpr Text taskDescriptionText = Text::block(50000);
inline constexpr Text commentText = Text::block(20000);
/// The id or name of something else.
inline constexpr Text referenceText = Text::line(100);

/// The fields of a new task, except its board and list. Failures stay with `body`.
TaskActions::NewTask readNewTask(BodyReader& body);
/// The fields of an edit, except the list. An absent key keeps the field; null clears it.
TaskActions::Edit readTaskEdit(BodyReader& body);

}  // namespace parvela::service
