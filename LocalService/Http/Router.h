#pragma once

#include "Http/Message.h"
#include "Store/Rows.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// Who may make a call.
enum class Access {
    anyone,  ///< also without signing in
    reader,  ///< every signed-in person and every token
    writer,  ///< a session, or a token with write access
};

/// Whose request it is and with what it was proved.
struct Caller {
    Account account;
    bool canWrite = true;
    std::optional<TokenId> token;  ///< the bearer token that was used; none for a browser session
};

/// One request on its way to a handler.
struct Call {
    const Request& request;
    std::optional<Caller> caller;        ///< present whenever the route needs one
    std::vector<std::string> arguments;  ///< what stood for the "{}" of the route's pattern, in order

    const Account& person() const { return caller->account; }
    template <class IdType>
    std::optional<IdType> id(std::size_t index) const {
        return IdType::parse(arguments.at(index));
    }
};

using Handler = std::function<Answer(Call&)>;

/// The table of calls: method and path pattern to handler. A pattern's "{}" stands for one path segment.
class Router {
public:
    void add(std::string_view method, std::string_view pattern, Access access, Handler handler);

    struct Match {
        const Handler* handler;
        Access access;
        std::vector<std::string> arguments;
    };
    /// 404 when no pattern fits the path, 405 with "Allow" when one does for other methods only. HEAD finds what GET
    /// finds.
    Result<Match, HttpError> find(const Request& request) const;

private:
    struct Route {
        std::string method;
        std::vector<std::string> pattern;
        Access access;
        Handler handler;
    };

    std::vector<Route> routes_;
};

}  // namespace parvela::service
