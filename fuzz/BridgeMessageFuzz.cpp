#include <ParvelaKit/BridgeMessage.h>
#include <ParvelaKit/ServerConfig.h>
#include <ParvelaKit/Text.h>
#include <ParvelaKit/TokenFormat.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace parvela;

void require(bool promise) {
    if (!promise) std::abort();
}

/// What the receiver of a message relies on.
struct Check {
    void operator()(const BridgeMessage::Link& link) const {
        require(TokenFormat::isValid(link.token));
        require(ServerConfig::allowsToken(link.apiBase));
        require(!link.workspaceId.empty());
    }
    void operator()(const BridgeMessage::TimerStarted& message) const {
        require(!message.timer.taskKey.empty());
        require(TimerInfo::fromJson(message.timer.json()) == message.timer);
    }
    void operator()(const BridgeMessage::TimerStopped& message) const { require(message.taskKey != ""); }
    void operator()(const BridgeMessage::Badge& badge) const { require(badge.count >= 0); }
    void operator()(const BridgeMessage::Boards& message) const {
        require(message.boards.size() <= 500);
        std::size_t grouped = 0;
        for (const auto& section : NativeBridge::sections(message.boards)) grouped += section.boards.size();
        require(grouped == message.boards.size());
        for (const BoardRef& board : message.boards) {
            require(!board.id.empty());
            require(!board.name.empty() && characterCount(board.name) <= 200);
            require(!board.colorHex || board.colorHex->size() == 7);
            require(!board.section || characterCount(*board.section) <= 100);
        }
    }
    void operator()(const auto&) const {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto message = BridgeMessage::parseText(text, Instant{})) std::visit(Check{}, message->content);
    return 0;
}
