#include "Update/UpdateController.h"

#include <chrono>
#include <string>
#include <utility>
#include <variant>

#include <fmt/format.h>

namespace parvela {

namespace {

/// A program may run for weeks in the panel. Whether a check is due is another question, asked each time.
constexpr std::chrono::hours checkInterval{6};
/// An answer that comes sooner needs no word before it.
constexpr std::chrono::milliseconds remarkPatience{700};

}  // namespace

UpdateController::UpdateController(std::shared_ptr<Updater> updater, AppVersion current, DesktopServices& desktop,
                                   UpdateSurfaces surfaces)
    : updater_(std::move(updater)), current_(std::move(current)), desktop_(desktop), surfaces_(std::move(surfaces)) {
}

void UpdateController::start() {
    daily_ = MainLoopTimer(checkInterval, [this] { checkIfDue(); }, MainLoopTimer::Kind::repeating);
    checkIfDue();
}

void UpdateController::checkIfDue() {
    if (updater_->isDue()) begin(Asked::byNobody);
}

void UpdateController::checkNow() {
    if (dialog_) {
        gtk_window_present(dialog_);
        return;
    }
    remark_ = MainLoopTimer(remarkPatience, [this] { surfaces_.remark("Checking for updates…"); });
    begin(Asked::byUser);
}

void UpdateController::begin(Asked asked) {
    const bool isUnderWay = checking_.has_value();
    if (!isUnderWay || asked == Asked::byUser) checking_ = asked;
    if (!isUnderWay) check(weak_from_this(), updater_).detach();
}

Task<void> UpdateController::check(std::weak_ptr<UpdateController> weak, std::shared_ptr<Updater> updater) {
    auto checking = updater->check();
    const UpdateResult result = co_await checking;
    if (const auto self = weak.lock()) self->finished(result);
}

void UpdateController::finished(const UpdateResult& result) {
    remark_.reset();
    const Asked asked = std::exchange(checking_, std::nullopt).value_or(Asked::byNobody);
    if (const auto* const offer = std::get_if<appcast::Offer>(&result)) {
        if (asked == Asked::byNobody && updater_->isSkipped(offer->version)) return;
        waiting_ = *offer;
        if (asked == Asked::byUser || surfaces_.visibleWindow()) showWaiting();
        return;
    }
    if (asked == Asked::byNobody) return;
    if (const auto* const error = std::get_if<UpdateError>(&result)) {
        present(newUpdateAnswer(surfaces_.visibleWindow(), "Couldn't check for updates", std::string(message(*error))));
    } else {
        present(newUpdateAnswer(surfaces_.visibleWindow(), "Parvela is up to date",
                                fmt::format("Version {} is the newest one.", current_.text())));
    }
}

void UpdateController::windowBecameActive() {
    if (waiting_ && surfaces_.visibleWindow()) showWaiting();
}

void UpdateController::showWaiting() {
    const auto offer = std::exchange(waiting_, std::nullopt);
    if (!offer || dialog_) return;
    present(newUpdateOffer(surfaces_.visibleWindow(), *offer, current_,
                           [weak = weak_from_this(), offer = *offer](UpdateChoice choice) {
                               if (const auto self = weak.lock()) self->chosen(choice, offer);
                           }));
}

void UpdateController::present(GtkWindow* dialog) {
    dialog_ = dialog;
    closed_ = connect<void(GtkWidget*)>(dialog, "destroy", [this](GtkWidget*) { dialog_ = nullptr; });
    gtk_window_present(dialog);
}

void UpdateController::chosen(UpdateChoice choice, const appcast::Offer& offer) {
    switch (choice) {
        case UpdateChoice::later:
            break;
        case UpdateChoice::skip:
            updater_->skip(offer.version);
            break;
        case UpdateChoice::download:
            desktop_.open(offer.page);
            break;
    }
}

}  // namespace parvela
