// ResourceToolbox.cpp - folders, file references and resource files for plug-ins.
//
// The toolbox is a C interface found by name, so its few pieces of state (the
// plug-in's folder, the error sink) are process-wide. Nothing may throw across
// the C boundary: every function catches and reports.

#include "korvane/ResourceToolbox.h"

#include "ToolboxGuard.h"
#include "ToolboxObjects.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>

namespace korvane::toolbox {
namespace {

struct ToolboxState {
    std::mutex mutex;
    std::filesystem::path home;
    ErrorSink sink;
    std::string lastError;
};

ToolboxState& state()
{
    static ToolboxState theState;
    return theState;
}

} // namespace

void setHomeDirectory(std::filesystem::path directory)
{
    std::lock_guard lock(state().mutex);
    state().home = std::move(directory);
}

std::filesystem::path homeDirectory()
{
    std::lock_guard lock(state().mutex);
    return state().home;
}

void setErrorSink(ErrorSink sink)
{
    std::lock_guard lock(state().mutex);
    state().sink = std::move(sink);
}

std::string lastError()
{
    std::lock_guard lock(state().mutex);
    return state().lastError;
}

void clearLastError()
{
    std::lock_guard lock(state().mutex);
    state().lastError.clear();
}

void reportError(const std::string& message)
{
    ErrorSink sink;
    {
        std::lock_guard lock(state().mutex);
        state().lastError = message;
        sink = state().sink;
    }
    // Called outside the lock, so a sink may ask for lastError().
    if (sink)
        sink(message);
}

const ResourceFile* resourceFileOf(const KV_ResourceFile* file)
{
    return file ? &file->file : nullptr;
}

std::filesystem::path pathOf(const KV_FileRef* file)
{
    return file ? file->path() : std::filesystem::path();
}

std::filesystem::path pathOf(const KV_DirectoryRef* directory)
{
    return directory ? directory->path : std::filesystem::path();
}

} // namespace korvane::toolbox

using korvane::toolbox::guarded;
using korvane::toolbox::reportError;

extern "C" {

KV_DirectoryRef* KV_GetHomeDirectory(void)
{
    return guarded("KV_GetHomeDirectory", static_cast<KV_DirectoryRef*>(nullptr), []() -> KV_DirectoryRef* {
        std::filesystem::path home = korvane::toolbox::homeDirectory();
        if (home.empty()) {
            reportError("KV_GetHomeDirectory: the host has set no plug-in folder");
            return nullptr;
        }
        return new KV_DirectoryRef{std::move(home)};
    });
}

KV_DirectoryRef* KV_MakeDirectoryRef(const char* iPathString)
{
    return guarded("KV_MakeDirectoryRef", static_cast<KV_DirectoryRef*>(nullptr), [&]() -> KV_DirectoryRef* {
        if (!iPathString || *iPathString == '\0')
            return nullptr;
        return new KV_DirectoryRef{std::filesystem::path(iPathString)};
    });
}

void KV_DestroyDirectoryRef(KV_DirectoryRef* iDirectoryRef)
{
    delete iDirectoryRef;
}

KV_FileRef* KV_MakeFileRef(const KV_DirectoryRef* iDirectoryRef, const char* iNameString, uint32_t iFileType,
                           const char* iExtensionString)
{
    return guarded("KV_MakeFileRef", static_cast<KV_FileRef*>(nullptr), [&]() -> KV_FileRef* {
        if (!iDirectoryRef || !iNameString || *iNameString == '\0')
            return nullptr;
        if (std::strchr(iNameString, '/')) {
            reportError(std::string("KV_MakeFileRef: \"") + iNameString + "\" is a path, not a file name");
            return nullptr;
        }
        auto* ref = new KV_FileRef;
        ref->directory = iDirectoryRef->path;
        ref->name = iNameString;
        ref->fileType = iFileType;
        ref->extension = iExtensionString ? iExtensionString : "";
        return ref;
    });
}

void KV_DestroyFileRef(KV_FileRef* iFileRef)
{
    delete iFileRef;
}

KV_ResourceFile* KV_OpenResourceFile(const KV_FileRef* iFileRef)
{
    return guarded("KV_OpenResourceFile", static_cast<KV_ResourceFile*>(nullptr), [&]() -> KV_ResourceFile* {
        if (!iFileRef)
            return nullptr;
        try {
            return new KV_ResourceFile{korvane::ResourceFile::load(iFileRef->path())};
        } catch (const korvane::Error& e) {
            // The message already names the file.
            reportError(e.what());
            return nullptr;
        }
    });
}

void KV_CloseResourceFile(KV_ResourceFile* iResourceFile)
{
    delete iResourceFile;
}

void* KV_GetResource(KV_ResourceFile* iResourceFile, uint32_t iResourceType, int iResourceID, int32_t* oResourceSize)
{
    if (oResourceSize)
        *oResourceSize = 0;
    return guarded("KV_GetResource", static_cast<void*>(nullptr), [&]() -> void* {
        if (!iResourceFile || iResourceID < std::numeric_limits<std::int16_t>::min() ||
            iResourceID > std::numeric_limits<std::int16_t>::max())
            return nullptr;
        const auto bytes = iResourceFile->file.get(iResourceType, static_cast<std::int16_t>(iResourceID));
        if (!bytes || bytes->size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max()))
            return nullptr;
        // One byte at least, so that an empty resource still reads as present.
        void* copy = std::malloc(bytes->empty() ? 1 : bytes->size());
        if (!copy)
            throw std::bad_alloc();
        if (!bytes->empty())
            std::memcpy(copy, bytes->data(), bytes->size());
        if (oResourceSize)
            *oResourceSize = static_cast<int32_t>(bytes->size());
        return copy;
    });
}

void KV_ReleaseResource(void* iResource)
{
    std::free(iResource);
}

} // extern "C"
