#pragma once
// An install engine for tests: it journals every call it gets and, on
// PrepInstaller and NeedToInstall, raises the events of its script. It is
// linked into a test program directly, and into the probe server that tests
// register and create by ProgID; there the test reaches it through the two
// exported functions below.
//
// Script: one step per line, fields separated by "|":
//   InstallationStatus|text   StatusMsgChange|text   InstallerError|text
//   ProgressUpdate|fraction   FTPStatus|fraction|text
//   pump|milliseconds   (runs the thread's message loop that long)
//   result|True|False   need|True|False   status|text
// Journal: "InstallFile=...", "UnInstallFile=...",
//   "PrepInstaller(<mode>,<force>) url=<primary installer base URL>",
//   "NeedToInstall()".

extern "C" {
__declspec(dllexport) void RecordingEngineSetScript(const char* script);
// Copies the journal, one entry a line, into `buffer`; returns its length.
__declspec(dllexport) int RecordingEngineJournal(char* buffer, int size);
}
