/*
 * GlintwaveCommands.h - the command handlers that Main dispatches to, and
 * the once-only set-up of the plug-in's globals.
 *
 * Every handler takes (theCommandRecSize, theCommandRec) and returns a
 * result code. It first compares theCommandRecSize with sizeof its record
 * and answers 3 (kPluginIncompatible) when the record is smaller, changing
 * nothing. Handlers reach the two data blocks only through the s-globals
 * (TheControl(), TheData()), never through the record's copy of them,
 * because host requests made during the command may move the blocks.
 *
 *   'INIT' DoInitialize         rebuilds the working data; needs the host procedure
 *   'FINI' DoFinish             shuts the dialog helpers down; needs the host procedure
 *   'INFO' DoInformation        type, version, name, texts; touches no data
 *   'CHEK' DoCheck              0 for the twelve commands, else 3; touches no data
 *   'DESC' DoDescribe           text of a result code; touches no data
 *   'SETF' DoSetup              frame and light set-up; needs the host procedure
 *   'GENF' DoGenerate           declared in FlareRender.h
 *   'INTF' DoInterface          the settings dialog (InterfaceCommand.cpp)
 *   'ICHN', 'FCHN', 'UCHN', 'LCHN'  the animation channels, see Channels.h
 */
#ifndef GLINTWAVE_COMMANDS_H
#define GLINTWAVE_COMMANDS_H

#include <stdint.h>

/* Marks of an initialised utility layer: 'FLAR' and 'KVpF'. */
extern uint32_t globalValidation1;
extern uint32_t globalValidation2;

/* Clears resourceFile. With initFlag, or the first time, it also sets the
   two marks and runs InitUtils(). */
void InitGlobals(bool initFlag);

int32_t DoInitialize(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoFinish(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoInformation(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoCheck(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoDescribe(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoSetup(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoInterface(int32_t theCommandRecSize, void* theCommandRec);

/* The animation channels (ChannelCommands.cpp). */
int32_t DoInitializeChannel(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoFinishChannel(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoUpdateChannel(int32_t theCommandRecSize, void* theCommandRec);
int32_t DoLoadChannel(int32_t theCommandRecSize, void* theCommandRec);

#endif /* GLINTWAVE_COMMANDS_H */
