#pragma once

#include "Domain/Changes.h"
#include "Http/Message.h"
#include "Store/BoardStore.h"

#include <ParvelaKit/GLibPtr.h>

#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// Open event streams (Server-Sent Events, HTML Living Standard 9.2) to browser windows: each hears of the changes that
/// its person may see.
class EventStream {
public:
    EventStream(BoardStore& boards, ChangeFeed& changes);
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;
    ~EventStream();

    /// The answer that opens a stream for one browser session.
    Response open(PersonId person, std::string sessionHash);
    /// Ends the streams of a session that signed out.
    void closeSession(std::string_view sessionHash);

private:
    struct Stream {
        Ref<SoupServerMessage> message;
        PersonId person;
        std::string sessionHash;
        Connection finished;
    };

    void publish(const Change& change);
    void ping();
    static void send(const Stream& stream, std::string_view text);
    static void end(const Stream& stream);

    BoardStore& boards_;
    std::list<Stream> streams_;
    ChangeFeed::Subscription subscription_;
    unsigned pingTimer_ = 0;
};

}  // namespace parvela::service
