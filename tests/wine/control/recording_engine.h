#pragma once
// An install engine for tests: it journals every call it gets and, on
// PrepInstaller and NeedToInstall, raises the events of its script. Linked
// into a test program directly, and into the probe server, where tests reach
// it through these two exports.
//
// Script: one step a line, fields separated by "|":
//   InstallationStatus|text   StatusMsgChange|text   InstallerError|text
//   ProgressUpdate|fraction   FTPStatus|fraction|text
//   pump|milliseconds   (runs the thread's message loop that long)
//   result|True|False   need|True|False   status|text
//   throw   (the operation runs out of memory)
// A step whose kind starts with "new:" is raised while the engine is made.
// Journal, one entry a line: "InstallFile=...", "UnInstallFile=...",
//   "PrepInstaller(<mode>,<force>) url=<primary installer base URL>",
//   "NeedToInstall()".

extern "C" {
__declspec(dllexport) void RecordingEngineSetScript(const char* script);  // also clears the journal
__declspec(dllexport) const char* RecordingEngineJournal();
}
