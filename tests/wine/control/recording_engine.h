#pragma once
// An install engine for tests: it journals every call it gets and raises the
// events of its script. Linked into a test program directly, and into the
// probe server, where tests reach it through these two exports.
//
// Script: one step a line, fields separated by "|":
//   InstallationStatus|text   StatusMsgChange|text   InstallerError|text
//   ProgressUpdate|fraction   FTPStatus|fraction|text
//   pump|milliseconds (the thread's messages run that long)   throw (out of memory)
//   result|True|False   need|True|False   status|text   todo|text (answers)
// Events are raised by PrepInstaller and NeedToInstall; a step whose kind
// starts with "new:" while the engine is made.
// Journal, one call a line: "InstallFile=...", "UnInstallFile=...",
//   "GetWindowsConfiguration()", "NeedToInstall()",
//   "PrepInstaller(<mode>,<force>) url=<primary installer base URL>".

#include <windows.h>

void PumpFor(DWORD milliseconds);  // the thread's messages run that long

extern "C" {
__declspec(dllexport) void RecordingEngineSetScript(const char* script);  // also clears the journal
__declspec(dllexport) const char* RecordingEngineJournal();
}
