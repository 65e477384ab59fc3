/*
 * PluginGlobals.cpp - the plug-in's module globals and their once-only
 * set-up.
 *
 * They live here rather than beside Main so that the core library links on
 * its own (tests link it without the entry point). Nothing survives between
 * commands except these and the two host-owned blocks.
 */
#include "GlintwaveCommands.h"
#include "GlintwaveData.h"
#include "PluginUtils.h"

KV_ResourceFile* resourceFile = nullptr;

bool sResetElementsFlag = false;
bool sResetColorsFlag = false;

uint32_t globalValidation1 = 0;
uint32_t globalValidation2 = 0;

static const uint32_t kValidation1 = KV_FOURCC('F', 'L', 'A', 'R');
static const uint32_t kValidation2 = KV_FOURCC('K', 'V', 'p', 'F');

void InitGlobals(bool initFlag)
{
    if (!initFlag && globalValidation1 == kValidation1 && globalValidation2 == kValidation2) {
        resourceFile = nullptr;
        return;
    }
    globalValidation1 = kValidation1;
    globalValidation2 = kValidation2;
    InitUtils();
    resourceFile = nullptr;
}
