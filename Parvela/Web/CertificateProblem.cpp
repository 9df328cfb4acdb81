#include "Web/CertificateProblem.h"

#include <fmt/format.h>

namespace parvela {

namespace {

/// The problem that says most, when there are several.
std::string_view reason(GTlsCertificateFlags problems) {
    if (problems & G_TLS_CERTIFICATE_REVOKED) return "its certificate was revoked";
    if (problems & G_TLS_CERTIFICATE_BAD_IDENTITY) return "its certificate belongs to another site";
    if (problems & G_TLS_CERTIFICATE_EXPIRED) return "its certificate has expired";
    if (problems & G_TLS_CERTIFICATE_NOT_ACTIVATED) {
        return "its certificate is not valid yet; perhaps this computer's clock is wrong";
    }
    if (problems & G_TLS_CERTIFICATE_UNKNOWN_CA) {
        return "its certificate was signed by nobody whom this computer trusts";
    }
    if (problems & G_TLS_CERTIFICATE_INSECURE) return "its certificate uses methods that are no longer safe";
    return "its certificate could not be checked";
}

}  // namespace

std::string certificateMessage(std::string_view host, GTlsCertificateFlags problems) {
    return fmt::format(
        "There is no safe connection to {}: {}. Nothing was sent, because somebody else might be answering in its "
        "place.",
        host, reason(problems));
}

}  // namespace parvela
