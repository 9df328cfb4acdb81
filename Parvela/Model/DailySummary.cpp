#include "Model/DailySummary.h"

#include <algorithm>
#include <cstddef>

namespace parvela {

namespace {

constexpr std::size_t titlesShown = 3;

}  // namespace

DailySummary DailySummary::of(const std::vector<TaskSummary>& dueToday, CivilDate today) {
    std::vector<const TaskSummary*> open;
    for (const TaskSummary& task : dueToday) {
        if (!task.done) open.push_back(&task);
    }
    if (open.empty()) return {"Nothing due today", "Your Parvela list is clear."};

    DailySummary summary;
    summary.title = open.size() == 1 ? "1 task due today" : std::to_string(open.size()) + " tasks due today";
    for (std::size_t i = 0; i < std::min(open.size(), titlesShown); ++i) {
        if (i > 0) summary.body += "\n";
        summary.body += open[i]->title;
    }
    if (open.size() > titlesShown) summary.body += "\nand " + std::to_string(open.size() - titlesShown) + " more";

    const auto todayText = today.text();  // date texts compare as dates
    const auto overdue = std::ranges::count_if(
        open, [&todayText](const TaskSummary* task) { return task->dueDate && *task->dueDate < todayText; });
    if (overdue > 0) summary.body += "\n" + std::to_string(overdue) + " overdue";
    return summary;
}

}  // namespace parvela
