// BrowserRunner.h - a dialog played by a person in a web browser.
//
// The runner serves the dialog page (host/dialogs/web/) through a DialogServer and
// runs the dialog from what the page sends. The page lays the controls out
// from the dialog's own description and shows the user controls' pixels as
// the plug-in drew them; it talks to the runner through these endpoints
// (every one needs the session's token, like the page itself):
//
//   GET  /api/state?after=V   the dialog as JSON once its version is above V
//                             (waits up to pollHold, then answers as it is)
//   GET  /api/image?id=N      the pixels of control N as last drawn: width x
//                             height RGBA bytes (X-Width, X-Height headers),
//                             opaque: the plug-in's alpha byte is not shown
//   POST /api/event           one user action as JSON, answered once the
//                             plug-in has handled it: {"error": "..."} and
//                             the state
//
// Actions: {"kind": "value", "id": N, "value": V} (check box, pop-up menu,
// radio group, slider), "text" with "text" (an edit text), "color" with
// "red", "green", "blue" (a colour button), "click" (a push button),
// "press" with "x", "y" (a user control, in its own pixels), then "move"
// and "release" with "x", "y" while the button is down, "accept", "cancel".
//
// The HTTP threads only queue actions and read what was published. Every
// action runs on the thread that called KV_ExecuteDialog (inside run()),
// through the DialogSession; after each one the runner publishes the new
// state and pixels, also at every step of a drag, so the preview follows
// the pointer.
//
// The dialog is cancelled when the browser goes away (after the page's
// first request, no request for goneAfter while none is waiting) or when
// stopRequested() says so (Ctrl-C).
#pragma once

#include "korvane/DialogSession.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace korvane {

struct BrowserRunnerOptions {
    std::filesystem::path webRoot;  // the page's files
    int port = 0;                   // 0: a free one
    std::chrono::milliseconds goneAfter{15000};
    std::chrono::milliseconds pollHold{5000};
    std::function<bool()> stopRequested;
};

class BrowserRunner : public DialogRunner {
public:
    // Why run() ended the dialog.
    enum class Ending { none, user, browserGone, stopped };

    // Starts serving. Throws Error when the server cannot listen.
    explicit BrowserRunner(BrowserRunnerOptions options);
    // Stops serving; waiting requests are answered first.
    ~BrowserRunner() override;
    BrowserRunner(const BrowserRunner&) = delete;
    BrowserRunner& operator=(const BrowserRunner&) = delete;

    // The page's address with the token.
    std::string url() const;

    void run(DialogSession& session) override;

    bool ran() const { return ran_; }
    Ending ending() const { return ending_; }

private:
    struct Shared;
    void publish(DialogSession& session);

    BrowserRunnerOptions options_;
    std::unique_ptr<Shared> shared_;
    bool ran_ = false;
    Ending ending_ = Ending::none;
};

} // namespace korvane
