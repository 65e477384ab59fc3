// PluginHost.h - loading a Korvane plug-in and calling it as a host does.
//
// A PluginLibrary is one loaded plug-in file: dlopen(RTLD_NOW | RTLD_LOCAL)
// and its entry point `Main`. The plug-in's home directory is the folder the
// file lives in; the toolbox is pointed at it before every call, so a plug-in
// that opens its resource file beside itself (KV_GetHomeDirectory) finds it.
//
// A PluginInstance is one use of a plug-in: it owns the two blocks a host
// keeps for it (control data, saved with a project, and plug-in data, the
// plug-in's working memory) and answers the requests the plug-in makes
// through the host procedure while it runs:
//
//   'FREE'  the budget of HostOptions::freeBudget bytes.
//   'ALOC'  resizes both blocks. The record must name the current blocks; a
//           size above the budget answers 1 and a negative one 3, leaving the
//           record describing the blocks as they are. With moveBlocks set,
//           every request moves both blocks to fresh memory and poisons the
//           old bytes, so a plug-in that keeps a pointer across a request
//           reads garbage (and trips AddressSanitizer).
//   'MMAL'/'MFRE'  malloc and free; whatever the plug-in leaves is freed
//           with the instance.
//   'STAT'  handed to the progress callback, whose answer is the request's
//           answer (4 cancels the render). Reports are paced through
//           theStatusTick: the host asks for the next one no sooner than
//           statusIntervalTicks sixtieths of a second later.
//   'ACHN'/'GCHN'/'SCHN'/'RCHN'  the instance's channels (ChannelStore.h).
//   anything else: 2, not offered.
// A record smaller than its request's type answers 3.
// HostOptions::onRequest sees every request first and may answer it itself
// (tests use it for canned answers and to log what was asked).
//
// Typed calls fill the command records; each returns the plug-in's result
// code. describe() turns a code into the plug-in's own text ('DESC'), and
// failureMessage() builds a whole message for a failed command.
//
// Texts inside records are Mac OS Roman; everything returned here is UTF-8.
#pragma once

#include "KVPluginAPI.h"
#include "korvane/ChannelStore.h"
#include "korvane/Error.h"
#include "korvane/Light.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace korvane {

// A plug-in that cannot be loaded or a command that failed. code() is the
// plug-in's result code, or 0 when the failure is the host's own.
class PluginError : public Error {
public:
    explicit PluginError(const std::string& message, std::int32_t code = 0)
        : Error(message), code_(code)
    {
    }
    std::int32_t code() const { return code_; }

private:
    std::int32_t code_;
};

// The platform's tick counter: sixtieths of a second of CLOCK_MONOTONIC,
// keeping the low 32 bits. Plug-ins read the same clock (TickCount), so the
// host can pace progress reports through theStatusTick.
std::int32_t tickCount();

// "'GENF'" for 0x47454E46: four printable characters in quotes, otherwise
// "0x" and eight hex digits.
std::string commandName(std::uint32_t command);

using PluginMain = std::int32_t (*)(std::uint32_t command, std::int32_t recordSize, void* record);

class PluginLibrary {
public:
    // Loads the file. Throws PluginError naming the file when it cannot be
    // loaded or has no entry point Main.
    explicit PluginLibrary(const std::filesystem::path& file);
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    const std::filesystem::path& file() const { return file_; }
    const std::filesystem::path& homeDirectory() const { return home_; }
    // Where the plug-in looks for its resources; the file's folder unless
    // the host keeps them elsewhere.
    void setHomeDirectory(std::filesystem::path home) { home_ = std::move(home); }
    // The file name alone ("Glintwave.so"), for messages.
    std::string displayName() const { return file_.filename().string(); }

    // Points the toolbox at the home directory, then calls Main with the
    // record exactly as given.
    std::int32_t call(std::uint32_t command, std::int32_t recordSize, void* record) const;

private:
    std::filesystem::path file_;
    std::filesystem::path home_;
    void* handle_ = nullptr;
    PluginMain main_ = nullptr;
};

// Sees a request before the host answers it (its record may be shorter than
// the request's type): a value returned is the request's answer and the host
// does nothing more; nullopt lets it answer. A hook that throws refuses the
// request with 3.
using RequestHook = std::function<std::optional<std::int32_t>(std::uint32_t selector, std::int32_t size,
                                                              void* record)>;

struct HostOptions {
    std::int32_t freeBudget = 64 * 1024 * 1024;  // bytes offered on 'FREE'
    bool moveBlocks = false;                     // 'ALOC' moves both blocks every time
    std::int32_t statusIntervalTicks = 6;        // 0: every report is wanted at once
    bool offerHostProcedure = true;              // false: theHostProc is null in every call
    RequestHook onRequest;
};

// One 'STAT' report, texts in UTF-8.
struct Progress {
    float position = 0;  // fraction done, 0 to 1
    std::int32_t value = 0;
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
    std::string unit;     // what is counted ("Scanline")
    std::string heading;  // what is being done ("Drawing Flare")
};

// Returns the answer to the report: 0 goes on, 4 cancels.
using ProgressCallback = std::function<std::int32_t(const Progress&)>;

// What 'INFO' answered, texts in UTF-8.
struct PluginInfo {
    std::uint32_t type = 0;
    std::int32_t version = 0;
    std::string name;
    std::string copyright;
    std::string author;
    std::string description;
    std::uint32_t permission = 0;
};

// The frame and light of one 'SETF'. The frame rectangle is (0, 0, width,
// height); positions are in pixels of that frame.
struct FrameSetup {
    std::int32_t frameIndex = 0;
    double frameTime = 0;
    double frameTimeDelta = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    double xScale = 1;  // pixels per unit of the plug-in's geometry
    double yScale = 1;
    double xCenter = 0;
    double yCenter = 0;
    double blurShutter = 0;
    Light light;  // its lengths are taken in this frame's pixels
    std::uint8_t lightAlpha = 255;

    // A frame of the given size with the scale half its height, the centre
    // at its middle, and the light.
    static FrameSetup centred(std::int32_t width, std::int32_t height, const Light& light);
};

// A pixel buffer for 'GENF': base addresses the pixel at (left, top).
struct FrameBuffer {
    void* base = nullptr;
    std::int32_t rowBytes = 0;
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int16_t depth = 48;  // 48, 32 or 8
    std::int32_t index = 0;   // colour index of an 8-bit sketch
};

// Memory the host owns for the plug-in; size 0 is no memory (null).
class HostBlock {
public:
    HostBlock() = default;
    ~HostBlock();
    HostBlock(const HostBlock&) = delete;
    HostBlock& operator=(const HostBlock&) = delete;

    std::uint8_t* data() const { return data_; }
    std::int32_t size() const { return size_; }

    // Keeps the first min(old, new) bytes; grown bytes are zero. In place
    // when it can be; `move` forces fresh memory and poisons the old bytes.
    // False (block unchanged) when memory runs out.
    bool resize(std::int32_t newSize, bool move);
    void assign(std::span<const std::uint8_t> bytes);

private:
    std::uint8_t* data_ = nullptr;
    std::int32_t size_ = 0;
};

class PluginInstance {
public:
    // The library must outlive the instance.
    explicit PluginInstance(const PluginLibrary& library, HostOptions options = {});
    // Sends 'FINI' when 'INIT' succeeded and no 'FINI' followed.
    ~PluginInstance();
    PluginInstance(const PluginInstance&) = delete;
    PluginInstance& operator=(const PluginInstance&) = delete;

    std::int32_t init();
    std::int32_t finish();
    // Throws PluginError when 'INFO' fails.
    PluginInfo info();
    // The plug-in's text for a result code; empty when it has none.
    std::string describe(std::int32_t code);
    std::int32_t setup(const FrameSetup& frame);
    std::int32_t generate(const FrameBuffer& buffer);
    // 'INTF': the plug-in's settings dialog, run by the installed dialog
    // runner (DialogSession.h); 4 when the user cancelled.
    std::int32_t interface();
    // Whether the plug-in understands a command ('CHEK'): its answer.
    std::int32_t check(std::uint32_t command);

    // Fills the record's leading PluginInfoRec, then calls Main. The record
    // must be at least sizeof(PluginInfoRec) bytes.
    std::int32_t call(std::uint32_t command, void* record, std::int32_t recordSize);

    // "Glintwave.so: 'GENF' failed: The user canceled the plug-in operation
    // (code 4)", with the toolbox's last complaint when it made one.
    std::string failureMessage(std::uint32_t command, std::int32_t code);
    // Throws PluginError(failureMessage(command, code), code) unless code is 0.
    void require(std::uint32_t command, std::int32_t code);

    void setProgressCallback(ProgressCallback callback) { progress_ = std::move(callback); }

    // The settings block, as a project keeps it. setControlData replaces it
    // (loading a project); the plug-in checks it on its next command.
    std::span<const std::uint8_t> controlData() const;
    void setControlData(std::span<const std::uint8_t> bytes);
    std::span<const std::uint8_t> pluginData() const;
    // The blocks themselves, for hosts and tests that fill or inspect them
    // between calls.
    HostBlock& controlBlock() { return control_; }
    HostBlock& pluginBlock() { return plugin_; }

    // The info record the host puts at the start of every command record.
    PluginInfoRec infoRecord();

    // The animation channels the plug-in registered, with their keys.
    ChannelStore& channels() { return channels_; }
    const ChannelStore& channels() const { return channels_; }

    const PluginLibrary& library() const { return library_; }
    const HostOptions& options() const { return options_; }
    HostOptions& options() { return options_; }

private:
    static std::int32_t hostProcedure(std::uint32_t selector, std::int32_t size, void* record);
    std::int32_t answer(std::uint32_t selector, std::int32_t size, void* record);
    std::int32_t answerFree(void* record);
    std::int32_t answerAllocate(void* record);
    std::int32_t answerStatus(void* record);
    std::int32_t answerMalloc(void* record);
    std::int32_t answerMemFree(void* record);

    // Tells a live instance from a stray reference in a request.
    static constexpr std::uint32_t kAlive = 0x4B56484Fu;  // 'KVHO'
    std::uint32_t alive_ = kAlive;

    const PluginLibrary& library_;
    HostOptions options_;
    HostBlock control_;
    HostBlock plugin_;
    std::map<void*, std::size_t> mallocs_;
    ChannelStore channels_;
    ProgressCallback progress_;
    std::string toolboxError_;  // what the toolbox reported during the last call
    bool initialized_ = false;
};

} // namespace korvane
