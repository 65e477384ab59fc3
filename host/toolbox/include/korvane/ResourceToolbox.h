// ResourceToolbox.h - the host's toolbox functions for folders, file
// references and resource files.
//
// Plug-ins find these functions by name in the host process (dlsym with
// RTLD_DEFAULT), so they have C linkage and default visibility, and the host
// executable must export them (ENABLE_EXPORTS) and keep them all (the
// korvane_toolbox target is an OBJECT library for that reason).
//
// Every function tolerates null arguments: it then returns null or does
// nothing. Objects made here are destroyed by their matching KV_Destroy... or
// KV_Close... function.
#pragma once

#include "KVToolboxTypes.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#define KORVANE_TOOLBOX_EXPORT __attribute__((visibility("default")))

extern "C" {

// The folder the loaded plug-in lives in (set by the host with
// korvane::toolbox::setHomeDirectory); null when the host has set none.
KORVANE_TOOLBOX_EXPORT KV_DirectoryRef* KV_GetHomeDirectory(void);
// A reference to the folder at the given path (used as given; not checked
// for existence). Null for a null or empty path.
KORVANE_TOOLBOX_EXPORT KV_DirectoryRef* KV_MakeDirectoryRef(const char* iPathString);
KORVANE_TOOLBOX_EXPORT void KV_DestroyDirectoryRef(KV_DirectoryRef* iDirectoryRef);

// A reference to the file iNameString in the folder. The name is used as
// given: nothing is appended, so "Glintwave.rsc" with extension "rsc" names
// Glintwave.rsc. The type and extension are kept with the reference. Null
// for a null folder or name, an empty name, or a name holding a '/'.
KORVANE_TOOLBOX_EXPORT KV_FileRef* KV_MakeFileRef(const KV_DirectoryRef* iDirectoryRef, const char* iNameString,
                                                  uint32_t iFileType, const char* iExtensionString);
KORVANE_TOOLBOX_EXPORT void KV_DestroyFileRef(KV_FileRef* iFileRef);

// Opens and checks the whole file. Null when it is missing or damaged; the
// reason goes to the error sink and to korvane::toolbox::lastError().
KORVANE_TOOLBOX_EXPORT KV_ResourceFile* KV_OpenResourceFile(const KV_FileRef* iFileRef);
KORVANE_TOOLBOX_EXPORT void KV_CloseResourceFile(KV_ResourceFile* iResourceFile);

// A fresh malloc'd copy of the resource's bytes on every call, so the caller
// may convert it in place; *oResourceSize receives its size. Null (and size
// 0) when the resource is absent or the id lies outside -32768..32767. An
// empty resource gives a non-null pointer and size 0.
KORVANE_TOOLBOX_EXPORT void* KV_GetResource(KV_ResourceFile* iResourceFile, uint32_t iResourceType, int iResourceID,
                                            int32_t* oResourceSize);
KORVANE_TOOLBOX_EXPORT void KV_ReleaseResource(void* iResource);

} // extern "C"

namespace korvane {
class ResourceFile;
}

namespace korvane::toolbox {

// The host sets the plug-in's folder before it calls the plug-in.
void setHomeDirectory(std::filesystem::path directory);
// Empty when none is set.
std::filesystem::path homeDirectory();

// Receives every message of the toolbox (why a file failed to open, ...).
// Without a sink the messages are only kept for lastError().
using ErrorSink = std::function<void(const std::string& message)>;
void setErrorSink(ErrorSink sink);
// The most recent message, empty when there was none since clearLastError().
std::string lastError();
void clearLastError();
// For other parts of the host's toolbox: records the message and hands it to
// the sink.
void reportError(const std::string& message);

// Views of the opaque objects for the rest of the host; null or empty for null.
const ResourceFile* resourceFileOf(const KV_ResourceFile* file);
std::filesystem::path pathOf(const KV_FileRef* file);
std::filesystem::path pathOf(const KV_DirectoryRef* directory);

} // namespace korvane::toolbox
