#pragma once

#include <string>
#include <string_view>

#include <gio/gio.h>

namespace parvela {

/// Why no page comes from `host`: what is wrong with its certificate, and what that means, for the error page.
std::string certificateMessage(std::string_view host, GTlsCertificateFlags problems);

}  // namespace parvela
