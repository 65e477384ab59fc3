// minimal_plugin.cpp - the smallest Korvane plug-in, so the host's tests do
// not depend on Glintwave alone.
//
//   'INFO'  type 'MINI', version 3, name "Minimal \xA5 Plug-in" (Mac OS Roman:
//           the bullet), and fixed texts.
//   'CHEK'  0 for the three commands it knows, 3 for any other.
//   'INIT'  asks 'FREE', then one 'ALOC' for a 16-byte control block and a
//           plug-in block of min(free, 4096) bytes, and marks both blocks:
//           the control block with "MINI" and bytes 4..15 = 4..15, the
//           plug-in block with the free size (native int32) and then byte i
//           = i & 0xFF. Answers whatever the host answered.
//   anything else: 2.
#include "KVPluginAPI.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr std::int32_t kControlSize = 16;
constexpr std::int32_t kLargestBlock = 4096;

void copyText(PStr255 destination, const char* text)
{
    const std::size_t length = std::strlen(text);
    destination[0] = static_cast<unsigned char>(length);
    std::memcpy(destination + 1, text, length);
}

std::int32_t information(std::int32_t size, void* record)
{
    if (size < static_cast<std::int32_t>(sizeof(PluginInformationRec)))
        return kPluginIncompatible;
    auto* info = static_cast<PluginInformationRec*>(record);
    info->thePluginType = KV_FOURCC('M', 'I', 'N', 'I');
    info->thePluginVersion = 3;
    copyText(info->thePluginName, "Minimal \xA5 Plug-in");
    copyText(info->thePluginCopyright, "No rights reserved");
    copyText(info->thePluginAuthor, "Host tests|minimal plug-in");
    copyText(info->thePluginDescription, "Answers a host's first questions.");
    info->thePluginPermission = 7;
    return kPluginNoError;
}

std::int32_t check(std::int32_t size, const void* record)
{
    if (size < static_cast<std::int32_t>(sizeof(PluginCheckRec)))
        return kPluginIncompatible;
    const IFFType command = static_cast<const PluginCheckRec*>(record)->theCommand;
    return command == kCmdInformation || command == kCmdCheck || command == kCmdInitialize ? kPluginNoError
                                                                                           : kPluginIncompatible;
}

std::int32_t initialize(std::int32_t size, const void* record)
{
    if (size < static_cast<std::int32_t>(sizeof(PluginInitializeRec)))
        return kPluginIncompatible;
    PluginInfoRec info;
    std::memcpy(&info, record, sizeof info);
    if (!info.theHostProc)
        return kPluginIncompatible;

    HostFreeRec offer{info.theHostReference, 0};
    std::int32_t result = info.theHostProc(kHostFree, sizeof offer, &offer);
    if (result != kPluginNoError)
        return result;
    const std::int32_t pluginSize = offer.theFreeSize < kLargestBlock ? offer.theFreeSize : kLargestBlock;

    HostAllocateRec allocate{info.theHostReference, info.theControlData, kControlSize, info.thePluginData,
                             pluginSize};
    result = info.theHostProc(kHostAllocate, sizeof allocate, &allocate);
    if (result != kPluginNoError)
        return result;

    auto* control = static_cast<unsigned char*>(allocate.theControlData);
    if (control && allocate.theControlDataSize >= kControlSize) {
        std::memcpy(control, "MINI", 4);
        for (int i = 4; i < kControlSize; ++i)
            control[i] = static_cast<unsigned char>(i);
    }
    auto* plugin = static_cast<unsigned char*>(allocate.thePluginData);
    if (plugin && allocate.thePluginDataSize >= 4) {
        std::memcpy(plugin, &offer.theFreeSize, 4);
        for (std::int32_t i = 4; i < allocate.thePluginDataSize; ++i)
            plugin[i] = static_cast<unsigned char>(i & 0xFF);
    }
    return kPluginNoError;
}

} // namespace

extern "C" __attribute__((visibility("default"))) std::int32_t Main(std::uint32_t command,
                                                                   std::int32_t theCommandRecSize,
                                                                   void* theCommandRec)
{
    if (!theCommandRec)
        return kPluginIncompatible;
    switch (command) {
    case kCmdInformation: return information(theCommandRecSize, theCommandRec);
    case kCmdCheck:       return check(theCommandRecSize, theCommandRec);
    case kCmdInitialize:  return initialize(theCommandRecSize, theCommandRec);
    default:              return kPluginUnsupported;
    }
}
