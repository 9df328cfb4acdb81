#include "Automation/Invocation.h"

#include <utility>

namespace parvela {

Invocation::~Invocation() {
    if (invocation_) fail("Cancelled", "Parvela ended before it was done.");
}

void Invocation::answer(GVariant* values) {
    g_dbus_method_invocation_return_value(std::exchange(invocation_, nullptr), values);
}

void Invocation::fail(std::string_view name, const std::string& message) {
    const std::string full = "app.parvela.Error." + std::string(name);
    g_dbus_method_invocation_return_dbus_error(std::exchange(invocation_, nullptr), full.c_str(), message.c_str());
}

void Invocation::fail(const IntentError& error) {
    fail(error.name(), error.message);
}

}  // namespace parvela
