#pragma once

#include "Domain/Secrets.h"
#include "Domain/TaskActions.h"

namespace parvela::service::demo {

inline constexpr const char* demoEmail = "robin@parvela.example";
inline constexpr const char* demoPassword = "parvela-demo";

/// Fills an empty database with a small team's workspace whose dates lie around `today`. A database with people in it
/// stays as it is.
void seed(Stores& stores, TaskActions& actions, const PasswordHasher& passwords, const Clock& clock, CivilDate today);

}  // namespace parvela::service::demo
