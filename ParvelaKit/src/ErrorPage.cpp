#include "JsonText.h"

#include <ParvelaKit/ErrorPage.h>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr std::string_view head =
    R"html(<!doctype html><meta charset="utf-8"><meta name="color-scheme" content="light dark">
<style>
  :root { color-scheme: light dark; --bg:#EEF0EE; --fg:#1E2120; --muted:#4F5652; --btn:#1E2120; --on-btn:#FFFFFF }
  @media (prefers-color-scheme: dark) { :root { --bg:#121514; --fg:#EEF2EF; --muted:#BFC6C1; --btn:#EEF2EF; --on-btn:#121514 } }
  body { background:var(--bg); color:var(--fg); font: 15px -apple-system, system-ui; display:grid; place-items:center; height:100vh; margin:0 }
  div { max-width: 420px; text-align:center; padding: 24px }
  h1 { font-size: 20px; margin: 0 0 8px }
  p { color: var(--muted); line-height: 1.5 }
  button { background: var(--btn); color: var(--on-btn); border:0; border-radius: 10px; padding: 9px 16px; font: 600 14px -apple-system; cursor:pointer }
</style>
<div><h1>Couldn't open Parvela</h1><p>)html";

constexpr std::string_view tail = R"html(">Try again</button></div>
<script>
  // No title bar over this page: drag the window from anywhere but the button.
  addEventListener('mousedown', (e) => {
    const h = window.webkit && webkit.messageHandlers && webkit.messageHandlers.parvela;
    if (!h || e.button !== 0 || e.ctrlKey || e.target.closest('button')) return;
    e.preventDefault();
    h.postMessage({ type: e.detail === 2 ? 'titlebarDoubleClick' : 'windowDrag' });
  });
</script>)html";

/// A string literal for a script.
std::string quoted(const Url& url) {
    return jsonText::write(nlohmann::json(url.text()));
}

std::string withoutTags(std::string_view text) {
    std::string safe;
    for (const char c : text) {
        if (c == '<') {
            safe += "&lt;";
        } else {
            safe += c;
        }
    }
    return safe;
}

}  // namespace

std::string ErrorPage::message(Failure failure, std::string_view description, const ServerConfig& server) {
    if (failure == Failure::other) return std::string(description);
    const std::string hint =
        server.mode == ServerConfig::Mode::production
            ? std::string()
            : fmt::format(", and that the local dev server is running at {}", server.appURL.text());
    return fmt::format("Parvela can't be reached. Check your connection{}.", hint);
}

std::string ErrorPage::html(std::string_view message, const Url& appURL) {
    return fmt::format("{}{}</p>\n<button onclick=\"location.href={}{}", head, withoutTags(message), quoted(appURL),
                       tail);
}

std::string ErrorPage::retryScript(const Url& appURL) {
    return fmt::format("document.querySelector('button').onclick = () => {{ location.href = {}; }};", quoted(appURL));
}

}  // namespace parvela
