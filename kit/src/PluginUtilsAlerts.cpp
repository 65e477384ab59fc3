/*
 * PluginUtilsAlerts.cpp - the alert flags, standard alert dialogs and the
 * plug-in's resource file.
 */
#include "PluginUtils.h"

#include "KVToolbox.h"
#include "PString.h"

namespace {

/* Alert dialogs of the resource file. */
constexpr int kStopAlertID    = 9000;
constexpr int kWarningAlertID = 9002;
constexpr int kMessageAlertID = 9003;
constexpr int kCautionAlertID = 9004;

/* The type of the plug-in's resource file. */
constexpr uint32_t kResourceFileType = KV_FOURCC('r', 's', 'r', 'c');
constexpr const char* kResourceFileExtension = "rsc";

int ShowAlert(KV_ResourceFile* iResFile, int iDialogID, const unsigned char* theText)
{
    return StandardDialog(iResFile, iDialogID, theText, aEmptyPStr, aEmptyPStr, aEmptyPStr);
}

} // namespace

extern "C" {

bool errorFlag     = false;
bool hideErrorFlag = false;
bool inBackground  = false;

void InitUtils(void)
{
    errorFlag     = false;
    hideErrorFlag = false;
    inBackground  = false;
}

void FinishUtils(void)
{
}

KV_ResourceFile* OpenResourceFile(const char* iResourceFileName)
{
    KV_DirectoryRef* theHome = KV_GetHomeDirectory();
    if (theHome == nullptr)
        return nullptr;
    KV_ResourceFile* theFile = nullptr;
    KV_FileRef* theFileRef =
        KV_MakeFileRef(theHome, iResourceFileName, kResourceFileType, kResourceFileExtension);
    if (theFileRef != nullptr) {
        theFile = KV_OpenResourceFile(theFileRef);
        KV_DestroyFileRef(theFileRef);
    }
    KV_DestroyDirectoryRef(theHome);
    return theFile;
}

int StandardDialog(KV_ResourceFile* iResFile, int iDialogID,
                   const unsigned char* iText0, const unsigned char* iText1,
                   const unsigned char* iText2, const unsigned char* iText3)
{
    KV_Dialog* theDialog = KV_MakeDialog(iResFile, iDialogID);
    if (theDialog == nullptr)
        return 0;
    SetParamText(theDialog, iText0, iText1, iText2, iText3);
    const int theAnswer = KV_ExecuteDialog(theDialog);
    KV_DestroyDialog(theDialog);
    return theAnswer;
}

int Stop(KV_ResourceFile* iResFile, const unsigned char* theText)
{
    return ShowAlert(iResFile, kStopAlertID, theText);
}

int Warning(KV_ResourceFile* iResFile, const unsigned char* theText)
{
    return ShowAlert(iResFile, kWarningAlertID, theText);
}

int Message(KV_ResourceFile* iResFile, const unsigned char* theText)
{
    return ShowAlert(iResFile, kMessageAlertID, theText);
}

int Caution(KV_ResourceFile* iResFile, const unsigned char* theText)
{
    return ShowAlert(iResFile, kCautionAlertID, theText);
}

void Error(KV_ResourceFile* iResFile, const unsigned char* theText, int32_t theCode)
{
    if (!errorFlag && !hideErrorFlag) {
        const unsigned char* theMessage =
            PStrConcat(theText != nullptr ? theText : aEmptyPStr, PS(": "), NumStr(theCode),
                       static_cast<const unsigned char*>(nullptr));
        Stop(iResFile, theMessage);
    }
    errorFlag = true;
}

void StandardError(KV_ResourceFile* iResFile, const unsigned char* theText)
{
    if (!errorFlag && !hideErrorFlag && theText != nullptr && theText[0] > 0)
        Stop(iResFile, theText);
    errorFlag = true;
}

} // extern "C"
