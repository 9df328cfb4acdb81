#include "Routes/BodyReader.h"
#include "Routes/Routes.h"

namespace parvela::service {

namespace {

constexpr Text tokenNameText = Text::line(100);
constexpr Text deviceIdText = Text::line(100);

nlohmann::json describe(const ApiToken& token) {
    nlohmann::json json = {{"id", token.id.text()},
                           {"name", token.name},
                           {"hint", token.hint},
                           {"kind", token.kind},
                           {"created_at", milliseconds(token.createdAt)},
                           {"last_used_at", nullptr},
                           {"write", token.canWrite}};
    if (token.deviceId) json["device_id"] = *token.deviceId;
    if (token.lastUsedAt) json["last_used_at"] = milliseconds(*token.lastUsedAt);
    return json;
}

}  // namespace

void addTokenRoutes(Router& router, Backend& backend) {
    using enum Access;
    router.add("POST", "/api/v1-link", writer, [&backend](Call& call) -> Answer {
        BodyReader body(call.request);
        const std::string deviceId = body.required("device_id", deviceIdText);
        const std::string name = body.optional("device_name", tokenNameText).value_or("");
        if (body.error()) return Failure(*body.error());
        const auto issued = backend.stores.tokens.issue(
            {.account = call.person().id, .name = name.empty() ? "Mac" : name, .deviceId = deviceId, .canWrite = true});
        const auto workspace = backend.stores.accounts.workspace();
        return Response::json({{"token", issued.secret},
                               {"api_base", backend.settings.apiOrigin},
                               {"workspace_id", workspace ? workspace->id.text() : ""},
                               {"workspace_name", workspace ? workspace->name : ""},
                               {"user_name", call.person().name}});
    });
    router.add("GET", "/api/tokens", reader, [&backend](Call& call) -> Answer {
        auto tokens = nlohmann::json::array();
        for (const ApiToken& token : backend.stores.tokens.ofAccount(call.person().id))
            tokens.push_back(describe(token));
        return Response::json({{"tokens", tokens}});
    });
    router.add("POST", "/api/tokens", writer, [&backend](Call& call) -> Answer {
        BodyReader body(call.request);
        const std::string name = body.required("name", tokenNameText);
        const bool write = body.flag("write").value_or(false);
        if (body.error()) return Failure(*body.error());
        const auto issued = backend.stores.tokens.issue(
            {.account = call.person().id, .name = name, .deviceId = std::nullopt, .canWrite = write});
        nlohmann::json json = describe(issued.token);
        json["token"] = issued.secret;
        return Response::json(json);
    });
    router.add("DELETE", "/api/tokens/{}", writer, [&backend](Call& call) -> Answer {
        const auto id = call.id<TokenId>(0);
        if (!id || !backend.stores.tokens.revoke(*id, call.person().id)) {
            return Failure(HttpError::notFound("There is no such token."));
        }
        return Response::ok();
    });
}

}  // namespace parvela::service
