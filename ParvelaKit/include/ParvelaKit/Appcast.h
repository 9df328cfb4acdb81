#pragma once

#include <ParvelaKit/AppVersion.h>
#include <ParvelaKit/Result.h>
#include <ParvelaKit/Url.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// The Ed25519 public key (RFC 8032) that signs the feed of new versions.
class FeedKey {
public:
    static constexpr std::size_t size = 32;

    /// The key's 32 bytes in base64 with padding (RFC 4648, section 4); none for anything else.
    static std::optional<FeedKey> fromBase64(std::string_view text);

    /// Whether the signature, in base64, is this key's for exactly these bytes.
    bool hasSigned(std::string_view bytes, std::string_view base64Signature) const;

private:
    FeedKey() = default;

    std::array<std::uint8_t, size> bytes_{};
};

/// The feed of new versions ("appcast"): an RSS 2.0 document in UTF-8, followed by its signature in a last line
///
///     <!-- parvela-signature: BASE64 -->
///
/// The signature is of all bytes before that line. It is checked before anything else is read from the feed.
namespace appcast {

/// Bytes of the largest feed that is read.
inline constexpr std::size_t maximumSize = 1024 * 1024;

/// A version that the feed speaks of.
struct Offer {
    AppVersion version;
    /// What is new: plain text of several lines, without characters that cannot be seen. May be empty.
    std::string notes;
    /// The page from which people get it; https.
    Url page;
    bool operator==(const Offer&) const = default;
};

enum class Error {
    tooLarge,
    notSigned,  ///< no signature, or not this key's
    malformed,  ///< not the format above, though signed
};

/// The document without its signature line, once the signature has proved to be the key's.
Result<std::string_view, Error> verified(std::string_view feed, const FeedKey& key);

/// The versions of a document, in its order. Of each "item" of the channel "version" (in any namespace) and "link" are
/// needed, "description" holds the notes. An item that lacks one, has one twice or whose values are not what they
/// should be is left out. A document type declaration makes the whole document malformed.
Result<std::vector<Offer>, Error> parse(std::string_view document);

/// The newest version of the feed that is newer than `current`; none when there is none.
Result<std::optional<Offer>, Error> newer(std::string_view feed, const FeedKey& key, const AppVersion& current);

}  // namespace appcast

}  // namespace parvela
