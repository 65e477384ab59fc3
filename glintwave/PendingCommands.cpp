/*
 * PendingCommands.cpp - commands understood (CHEK answers 0 for them) whose
 * work is not written yet: the settings dialog.
 *
 * It checks its record size like every handler (3 when too small) and
 * then answers 2, "Unsupported plug-in command was received". This file
 * goes away as the real handlers arrive.
 */
#include "GlintwaveCommands.h"
#include "KVPluginAPI.h"

static int32_t NotYetSupported(int32_t theCommandRecSize, int32_t theMinimumSize)
{
    if (theCommandRecSize < theMinimumSize)
        return kPluginIncompatible;
    return kPluginUnsupported;
}

int32_t DoInterface(int32_t theCommandRecSize, void* /*theCommandRec*/)
{
    return NotYetSupported(theCommandRecSize, (int32_t)sizeof(PluginInterfaceRec));
}
