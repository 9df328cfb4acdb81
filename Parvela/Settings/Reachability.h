#pragma once

#include <ParvelaKit/Task.h>
#include <ParvelaKit/Transport.h>
#include <ParvelaKit/Url.h>

#include <stop_token>
#include <string>

namespace parvela {

/// Whether something answers at an address, and whether it looks like what should be there.
struct Reachability {
    enum class State { reached, doubtful, failed, cancelled };

    State state = State::failed;
    std::string message;  ///< one English sentence; empty when cancelled
};

/// Loads the web app's start page. Needs no token.
Task<Reachability> reachWebApp(Transport transport, Url appURL, std::stop_token stop);
/// Asks the API site without a token, which a Parvela service refuses in a way of its own.
Task<Reachability> reachApi(Transport transport, Url apiURL, std::stop_token stop);

}  // namespace parvela
