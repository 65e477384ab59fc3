// BrowserRunner.cpp - actions from the page queued to the plug-in's thread,
// the dialog's state published back (protocol in the header).

#include "korvane/BrowserRunner.h"

#include "korvane/DialogServer.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>

namespace korvane {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::json;

// How often the waiting plug-in thread looks at the clock and the stop flag.
constexpr std::chrono::milliseconds kTick{200};
// How long an action's request waits for the plug-in to handle it.
constexpr std::chrono::seconds kActionWait{30};

const char* kindName(KV_ControlType kind)
{
    switch (kind) {
    case cKV_PushButton:    return "button";
    case cKV_CheckBox:      return "check";
    case cKV_RadioGroup:    return "radio";
    case cKV_DividerLine:   return "divider";
    case cKV_GroupBox:      return "group";
    case cKV_TabGroup:      return "tabs";
    case cKV_ColorSlider:   return "slider";
    case cKV_Scroller:      return "scroller";
    case cKV_StaticText:    return "label";
    case cKV_EditText:      return "edit";
    case cKV_ColorButton:   return "color";
    case cKV_ListBox:       return "list";
    case cKV_PopupMenu:     return "popup";
    case cKV_Picture:       return "picture";
    case cKV_UserControl:   return "user";
    case cKV_OpenGLControl: return "gl";
    default:                return "none";
    }
}

Json controlJson(const ControlState& control)
{
    Json out = {
        {"id", control.id},
        {"kind", kindName(control.kind)},
        {"bounds", {control.bounds.left, control.bounds.top, control.bounds.right, control.bounds.bottom}},
        {"label", control.label},
        {"value", control.value},
        {"maximum", control.maximum},
        {"enabled", control.enabled},
        {"visible", control.visible},
    };
    if (control.kind == cKV_EditText)
        out["text"] = control.text;
    if (control.kind == cKV_ColorButton)
        out["color"] = {control.red, control.green, control.blue};
    if (!control.menu.empty())
        out["menu"] = control.menu;
    if (control.role == DialogRole::accept)
        out["role"] = "accept";
    else if (control.role == DialogRole::cancel)
        out["role"] = "cancel";
    return out;
}

// A control's pixels as RGBA bytes, opaque.
std::string rgbaOf(const Pixels& pixels)
{
    std::string bytes;
    bytes.reserve(pixels.argb.size() * 4);
    for (const std::uint32_t p : pixels.argb) {
        bytes += static_cast<char>((p >> 16) & 0xFF);
        bytes += static_cast<char>((p >> 8) & 0xFF);
        bytes += static_cast<char>(p & 0xFF);
        bytes += static_cast<char>(0xFF);
    }
    return bytes;
}

struct Image {
    int width = 0;
    int height = 0;
    std::string rgba;
};

int intOf(const Json& action, const char* name)
{
    const auto found = action.find(name);
    if (found == action.end() || !found->is_number_integer())
        throw Error(std::string("the action needs a whole number \"") + name + "\"");
    const auto value = found->get<std::int64_t>();
    if (value < -1000000 || value > 1000000)
        throw Error(std::string("\"") + name + "\" is out of range");
    return static_cast<int>(value);
}

Point shifted(Point point, Point by)
{
    return Point{point.x + by.x, point.y + by.y};
}

ApiResponse jsonResponse(int status, const Json& body)
{
    ApiResponse response;
    response.status = status;
    response.body = body.dump();
    return response;
}

} // namespace

struct BrowserRunner::Shared {
    std::mutex mutex;
    std::condition_variable changed;

    // From the page to the plug-in's thread.
    struct Action {
        std::uint64_t number = 0;
        Json body;
    };
    std::deque<Action> actions;
    std::uint64_t queued = 0;
    std::uint64_t handled = 0;
    std::map<std::uint64_t, std::string> errors;  // of handled actions, until their request reads them

    // From the plug-in's thread to the page.
    std::uint64_t version = 0;
    Json state = Json::object();
    std::map<int, Image> images;

    // Whether the page is still there.
    bool contacted = false;
    int waiting = 0;  // requests being answered
    Clock::time_point lastContact = Clock::now();
    bool closing = false;

    std::unique_ptr<DialogServer> server;  // last: its threads use the members above

    ApiResponse answer(const ApiRequest& request, std::chrono::milliseconds pollHold);
    ApiResponse stateAfter(std::uint64_t after, std::chrono::milliseconds pollHold);
    ApiResponse image(const std::string& id);
    ApiResponse act(const std::string& body);
    // The next action for the plug-in's thread, or nullopt when none came
    // within one tick. The lock is held.
    std::optional<Action> nextAction(std::unique_lock<std::mutex>& lock);
    bool browserGone(std::chrono::milliseconds goneAfter) const
    {
        return contacted && waiting == 0 && Clock::now() - lastContact > goneAfter;
    }
};

ApiResponse BrowserRunner::Shared::answer(const ApiRequest& request, std::chrono::milliseconds pollHold)
{
    {
        const std::lock_guard lock(mutex);
        contacted = true;
        ++waiting;
        lastContact = Clock::now();
    }
    struct Done {
        Shared& shared;
        ~Done()
        {
            const std::lock_guard lock(shared.mutex);
            --shared.waiting;
            shared.lastContact = Clock::now();
        }
    } done{*this};

    const auto query = [&request](const char* name) {
        const auto found = request.query.find(name);
        return found == request.query.end() ? std::string() : found->second;
    };
    if (request.method == "GET" && request.path == "/api/state") {
        std::uint64_t after = 0;
        try {
            after = query("after").empty() ? 0 : std::stoull(query("after"));
        } catch (const std::exception&) {
            return jsonResponse(400, {{"error", "after must be a version number"}});
        }
        return stateAfter(after, pollHold);
    }
    if (request.method == "GET" && request.path == "/api/image")
        return image(query("id"));
    if (request.method == "POST" && request.path == "/api/event")
        return act(request.body);
    return jsonResponse(404, {{"error", "no such endpoint"}});
}

ApiResponse BrowserRunner::Shared::stateAfter(std::uint64_t after, std::chrono::milliseconds pollHold)
{
    std::unique_lock lock(mutex);
    changed.wait_for(lock, pollHold, [&] { return version > after || closing; });
    return jsonResponse(200, state);
}

ApiResponse BrowserRunner::Shared::image(const std::string& id)
{
    const std::lock_guard lock(mutex);
    int number = 0;
    try {
        number = std::stoi(id);
    } catch (const std::exception&) {
        return jsonResponse(404, {{"error", "no image"}});
    }
    const auto found = images.find(number);
    if (found == images.end())
        return jsonResponse(404, {{"error", "no image"}});
    ApiResponse response;
    response.contentType = "application/octet-stream";
    response.body = found->second.rgba;
    response.headers["X-Width"] = std::to_string(found->second.width);
    response.headers["X-Height"] = std::to_string(found->second.height);
    return response;
}

ApiResponse BrowserRunner::Shared::act(const std::string& body)
{
    Json action = Json::parse(body, nullptr, false);
    if (!action.is_object() || !action.contains("kind") || !action["kind"].is_string())
        return jsonResponse(400, {{"error", "an action is a JSON object with a \"kind\""}});
    std::unique_lock lock(mutex);
    if (closing || state.value("ended", false))
        return jsonResponse(409, {{"error", "the dialog has closed"}, {"state", state}});
    const std::uint64_t number = ++queued;
    actions.push_back(Action{number, std::move(action)});
    changed.notify_all();
    if (!changed.wait_for(lock, kActionWait, [&] { return handled >= number || closing; }))
        return jsonResponse(503, {{"error", "the plug-in is busy"}, {"state", state}});
    std::string error;
    if (const auto found = errors.find(number); found != errors.end()) {
        error = found->second;
        errors.erase(found);
    }
    return jsonResponse(200, {{"error", error}, {"state", state}});
}

std::optional<BrowserRunner::Shared::Action> BrowserRunner::Shared::nextAction(std::unique_lock<std::mutex>& lock)
{
    changed.wait_for(lock, kTick, [&] { return !actions.empty() || closing; });
    if (actions.empty())
        return std::nullopt;
    Action action = std::move(actions.front());
    actions.pop_front();
    return action;
}

BrowserRunner::BrowserRunner(BrowserRunnerOptions options)
    : options_(std::move(options)), shared_(std::make_unique<Shared>())
{
    const std::chrono::milliseconds pollHold = options_.pollHold;
    Shared* shared = shared_.get();
    shared_->server = std::make_unique<DialogServer>(
        options_.webRoot, makeToken(), [shared, pollHold](const ApiRequest& request) {
            return shared->answer(request, pollHold);
        },
        options_.port);
}

BrowserRunner::~BrowserRunner()
{
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->closing = true;
    }
    shared_->changed.notify_all();
    shared_->server.reset();
}

std::string BrowserRunner::url() const
{
    return shared_->server->url();
}

void BrowserRunner::publish(DialogSession& session)
{
    Json controls = Json::array();
    std::map<int, Image> images;
    for (const ControlState& control : session.controls()) {
        controls.push_back(controlJson(control));
        if (control.kind == cKV_UserControl) {
            const Pixels pixels = session.snapshot(control.id);
            images[control.id] = Image{pixels.width, pixels.height, rgbaOf(pixels)};
        }
    }
    const std::lock_guard lock(shared_->mutex);
    ++shared_->version;
    shared_->state = Json{
        {"version", shared_->version}, {"title", session.title()},   {"width", session.width()},
        {"height", session.height()},  {"ended", session.ended()},   {"result", session.result()},
        {"controls", std::move(controls)},
    };
    shared_->images = std::move(images);
    shared_->changed.notify_all();
}

void BrowserRunner::run(DialogSession& session)
{
    ran_ = true;
    ending_ = Ending::none;
    Shared& shared = *shared_;

    // Marks an action handled, with what went wrong.
    const auto finish = [&shared](std::uint64_t number, const std::string& error) {
        const std::lock_guard lock(shared.mutex);
        shared.handled = std::max(shared.handled, number);
        if (!error.empty())
            shared.errors[number] = error;
        shared.changed.notify_all();
    };
    // Whether the dialog must end without the user: Ctrl-C or no browser.
    const auto mustStop = [this, &shared]() {
        if (options_.stopRequested && options_.stopRequested()) {
            ending_ = Ending::stopped;
            return true;
        }
        const std::lock_guard lock(shared.mutex);
        if (shared.browserGone(options_.goneAfter)) {
            ending_ = Ending::browserGone;
            return true;
        }
        return false;
    };

    // The pointer while a user control's button is down: the press point
    // first, then each move; a release moves to its point if it differs,
    // then lets go. Anything else ends the press and waits its turn.
    // The press's own request is answered as tracking starts, so the page
    // can send the moves.
    const auto track = [&](std::uint64_t press, Point origin, Point first) -> PointerSource {
        auto pending = std::make_shared<std::optional<Point>>(shifted(first, origin));
        auto last = std::make_shared<Point>(shifted(first, origin));
        auto released = std::make_shared<bool>(false);
        return [&, press, pending, last, released, origin](Point& at) {
            if (*pending) {
                finish(press, "");
                at = **pending;
                *last = at;
                pending->reset();
                return true;
            }
            at = *last;
            if (*released)
                return false;
            publish(session);  // what the last step drew
            for (;;) {
                if (mustStop())
                    return false;
                std::unique_lock lock(shared.mutex);
                shared.changed.wait_for(lock, kTick, [&] { return !shared.actions.empty() || shared.closing; });
                if (shared.closing)
                    return false;
                if (shared.actions.empty())
                    continue;
                const std::string kind = shared.actions.front().body.value("kind", "");
                if (kind != "move" && kind != "release")
                    return false;
                Shared::Action action = std::move(shared.actions.front());
                shared.actions.pop_front();
                lock.unlock();
                Point point = *last;
                std::string error;
                try {
                    point = shifted(Point{intOf(action.body, "x"), intOf(action.body, "y")}, origin);
                } catch (const Error& e) {
                    error = e.what();
                }
                finish(action.number, error);
                if (kind == "release") {
                    *released = true;
                    if (point == *last)
                        return false;
                }
                at = *last = point;
                return true;
            }
        };
    };

    const auto handle = [&](std::uint64_t number, const Json& action) {
        const std::string kind = action.value("kind", "");
        if (kind == "accept") {
            session.accept();
        } else if (kind == "cancel") {
            session.cancel();
        } else if (kind == "value") {
            session.setValue(intOf(action, "id"), intOf(action, "value"));
        } else if (kind == "text") {
            const auto text = action.find("text");
            if (text == action.end() || !text->is_string())
                throw Error("a text action needs a \"text\"");
            session.typeText(intOf(action, "id"), text->get<std::string>());
        } else if (kind == "color") {
            session.pickColor(intOf(action, "id"), intOf(action, "red"), intOf(action, "green"),
                              intOf(action, "blue"));
        } else if (kind == "click") {
            session.click(intOf(action, "id"));
        } else if (kind == "press") {
            const int id = intOf(action, "id");
            const ControlState control = session.control(id);
            const Point at{intOf(action, "x"), intOf(action, "y")};
            const Point origin{control.bounds.left, control.bounds.top};
            session.press(id, shifted(at, origin), track(number, origin, at));
        } else if (kind == "move" || kind == "release") {
            // A pointer left over from a press that already ended.
        } else {
            throw Error("no action \"" + kind + "\"");
        }
    };

    publish(session);
    while (!session.ended()) {
        if (mustStop()) {
            session.cancel();
            break;
        }
        std::optional<Shared::Action> action;
        {
            std::unique_lock lock(shared.mutex);
            action = shared.nextAction(lock);
        }
        if (!action)
            continue;
        std::string error;
        try {
            handle(action->number, action->body);
        } catch (const std::exception& e) {
            error = e.what();
        }
        publish(session);
        finish(action->number, error);
    }
    if (ending_ == Ending::none)
        ending_ = Ending::user;
    publish(session);
}

} // namespace korvane
