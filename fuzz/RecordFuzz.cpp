#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/Records.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

/// What decodes must encode, and decode again to the same record.
template <class T>
void check(const std::string& input) {
    const auto record = parvela::json::decode<T>(input);
    if (!record) return;
    const auto again = parvela::json::decode<T>(parvela::json::encode(*record));
    if (!again || *again != *record) std::abort();
}

template <class... Records>
void checkEach(const std::string& input) {
    (check<Records>(input), ...);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace parvela;
    const std::string input(reinterpret_cast<const char*>(data), size);
    checkEach<BoardDetail, BoardSummary, BoardsResponse, ChangedResponse, CommentResponse, HomeData, Me,
              NotificationsResponse, OKResponse, PeopleResponse, SearchResponse, TaskDetail, TaskSummary,
              TasksResponse>(input);
    checkEach<ChecklistTick, CommentDraft, NewTask, NotificationMark, PushRegistration, PushRemoval, TaskEdit,
              TaskPatch>(input);
    return 0;
}
