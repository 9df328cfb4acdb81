#include <ParvelaKit/Appcast.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <span>
#include <utility>

#include <glib.h>
#include <sodium.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace parvela {

namespace {

/// Exactly as many bytes as `target` has.
bool decodeBase64(std::string_view text, std::span<std::uint8_t> target) {
    std::size_t size = 0;
    const char* end = nullptr;
    return sodium_base642bin(target.data(), target.size(), text.data(), text.size(), nullptr, &size, &end,
                             sodium_base64_VARIANT_ORIGINAL) == 0 &&
           end == text.data() + text.size() && size == target.size();
}

}  // namespace

std::optional<FeedKey> FeedKey::fromBase64(std::string_view text) {
    FeedKey key;
    if (!decodeBase64(text, key.bytes_)) return std::nullopt;
    return key;
}

bool FeedKey::hasSigned(std::string_view bytes, std::string_view base64Signature) const {
    std::array<std::uint8_t, crypto_sign_BYTES> signature{};
    return decodeBase64(base64Signature, signature) &&
           crypto_sign_verify_detached(signature.data(), reinterpret_cast<const unsigned char*>(bytes.data()),
                                       bytes.size(), bytes_.data()) == 0;
}

namespace appcast {

namespace {

constexpr std::string_view signatureBegin = "<!-- parvela-signature: ";
constexpr std::string_view signatureEnd = " -->";

constexpr std::size_t mostDepth = 16;
constexpr std::size_t mostOffers = 1000;
constexpr std::size_t mostNoteCharacters = 10'000;

using MarkupPtr = GLibPtr<GMarkupParseContext, g_markup_parse_context_free>;

/// Line breaks and tabs stay; other characters without a shape of their own, and marks that reorder text, go.
std::string plainText(std::string_view text) {
    std::string plain;
    const auto size = static_cast<std::int32_t>(text.size());
    for (std::int32_t i = 0; i < size;) {
        const std::int32_t start = i;
        UChar32 character = 0;
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data()), i, size, character);
        const bool isLayout = character == '\n' || character == '\t';
        if (character < 0 || u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL) != 0) continue;
        if (u_charType(character) == U_CONTROL_CHAR && !isLayout) continue;
        plain += text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start));
    }
    return std::string(trimmed(firstCharacters(trimmed(plain), mostNoteCharacters)));
}

/// A value of an item: absent, there, or there more than once.
class ItemText {
public:
    void begin() { ++count_; }
    void append(std::string_view text) { text_ += text; }
    bool isAbsent() const { return count_ == 0; }
    bool isOnce() const { return count_ == 1; }
    std::string_view text() const { return trimmed(text_); }

private:
    std::string text_;
    int count_ = 0;
};

struct Item {
    ItemText version, link, description;

    std::optional<Offer> offer() const {
        if (!version.isOnce() || !link.isOnce() || !(description.isOnce() || description.isAbsent())) return {};
        auto number = AppVersion::parse(version.text());
        auto page = Url::parse(link.text());
        if (!number || !page || page->lowercaseScheme() != "https" || page->lowercaseHost().empty()) return {};
        return Offer{.version = std::move(*number), .notes = plainText(description.text()), .page = std::move(*page)};
    }
};

std::string_view localName(std::string_view name) {
    const auto colon = name.rfind(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

/// Follows the document's elements.
class Reader {
public:
    Result<std::vector<Offer>, Error> read(std::string_view document) {
        constexpr GMarkupParser events{
            .start_element = [](GMarkupParseContext*, const char* name, const char**, const char**, gpointer self,
                                GError** error) { static_cast<Reader*>(self)->began(name, error); },
            .end_element = [](GMarkupParseContext*, const char*, gpointer self,
                              GError**) { static_cast<Reader*>(self)->ended(); },
            .text = [](GMarkupParseContext*, const char* text, gsize size, gpointer self,
                       GError**) { static_cast<Reader*>(self)->found({text, size}); },
            .passthrough =
                [](GMarkupParseContext*, const char* text, gsize size, gpointer, GError** error) {
                    // Comments, processing instructions, and the declarations that may not be.
                    const std::string_view raw(text, size);
                    if (raw.starts_with("<!") && !raw.starts_with("<!--")) refuse(error, "declarations are not read");
                },
            .error = nullptr,
        };
        const MarkupPtr context(g_markup_parse_context_new(
            &events, static_cast<GMarkupParseFlags>(G_MARKUP_TREAT_CDATA_AS_TEXT | G_MARKUP_PREFIX_ERROR_POSITION),
            this, nullptr));
        ErrorPtr error;
        if (!g_markup_parse_context_parse(context.get(), document.data(), static_cast<gssize>(document.size()),
                                          error.out()) ||
            !g_markup_parse_context_end_parse(context.get(), error.out()) || !hasChannel_) {
            return Failure(Error::malformed);
        }
        return std::move(offers_);
    }

private:
    static void refuse(GError** error, const char* why) {
        g_set_error_literal(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, why);
    }

    void began(std::string_view name, GError** error) {
        if (path_.size() == mostDepth) return refuse(error, "elements stand too deep");
        path_.emplace_back(name);
        if (isAt({"rss", "channel"})) hasChannel_ = true;
        if (isAt({"rss", "channel", "item"})) item_.emplace();
        if (!item_ || path_.size() != 4) return;
        const std::string_view local = localName(name);
        value_ = local == "version"      ? &item_->version
                 : name == "link"        ? &item_->link
                 : name == "description" ? &item_->description
                                         : nullptr;
        if (value_) value_->begin();
    }

    void found(std::string_view text) {
        if (value_) value_->append(text);
    }

    void ended() {
        if (path_.size() == 4) value_ = nullptr;
        if (item_ && path_.size() == 3) {
            auto offer = item_->offer();
            if (offer && offers_.size() < mostOffers) offers_.push_back(std::move(*offer));
            item_.reset();
        }
        path_.pop_back();
    }

    bool isAt(std::initializer_list<std::string_view> path) const { return std::ranges::equal(path_, path); }

    std::vector<std::string> path_;
    std::optional<Item> item_;
    ItemText* value_ = nullptr;  ///< the one whose text comes now
    std::vector<Offer> offers_;
    bool hasChannel_ = false;
};

}  // namespace

Result<std::string_view, Error> verified(std::string_view feed, const FeedKey& key) {
    if (feed.size() > maximumSize) return Failure(Error::tooLarge);
    std::string_view text = feed;
    if (text.ends_with('\n')) text.remove_suffix(1);
    const auto lineBreak = text.rfind('\n');
    if (lineBreak == std::string_view::npos) return Failure(Error::notSigned);
    std::string_view signature = text.substr(lineBreak + 1);
    if (!signature.starts_with(signatureBegin) || !signature.ends_with(signatureEnd) ||
        signature.size() < signatureBegin.size() + signatureEnd.size()) {
        return Failure(Error::notSigned);
    }
    signature.remove_prefix(signatureBegin.size());
    signature.remove_suffix(signatureEnd.size());
    const std::string_view document = feed.substr(0, lineBreak + 1);
    if (!key.hasSigned(document, signature)) return Failure(Error::notSigned);
    return document;
}

Result<std::vector<Offer>, Error> parse(std::string_view document) {
    return Reader().read(document);
}

Result<std::optional<Offer>, Error> newer(std::string_view feed, const FeedKey& key, const AppVersion& current) {
    const auto document = verified(feed, key);
    if (!document) return Failure(document.error());
    const auto offers = parse(*document);
    if (!offers) return Failure(offers.error());
    const auto newest = std::ranges::max_element(*offers, {}, &Offer::version);
    if (newest == offers->end() || newest->version <= current) return std::nullopt;
    return *newest;
}

}  // namespace appcast

}  // namespace parvela
