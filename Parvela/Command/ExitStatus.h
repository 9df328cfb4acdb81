#pragma once

namespace parvela {

/// How the command ends; scripts may rely on the numbers.
enum class ExitStatus {
    success = 0,
    failure = 1,    ///< the service refused, or something on this machine went wrong
    usage = 2,      ///< the command line, or what it asks for, makes no sense
    notLinked = 3,  ///< no token is stored for the server in use, or it is no longer valid
    offline = 4,    ///< the service could not be reached, or did not answer in time
};

}  // namespace parvela
