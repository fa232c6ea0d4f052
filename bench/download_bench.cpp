// download_bench <url> <destination> <runs> [pump|nopump]: downloads the URL
// with clsFTP::DownloadFile the way an item does, progress events included,
// and prints the best time of the runs in milliseconds. With "nopump" the
// message pump between blocks is counted but not run, which shows what the
// pump costs apart from the transfer.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <windows.h>

#include "control/WindowsDesktop.h"
#include "transfer/clsFTP.h"

namespace {

// The control's own desktop, counted; "nopump" leaves the pump out.
class PumpingDesktop : public corvan::WindowsDesktop {
public:
    void DoEvents() override {
        ++pumps;
        if (pump) WindowsDesktop::DoEvents();
    }
    bool pump = true;
    long pumps = 0;
};

class CountingEvents : public corvan::clsFTPEvents {
public:
    void FileProgress(float Percent, const std::string& status) override {
        ++events;
        last = Percent;
        lastText = status;
    }
    void StatusChange(std::string&, int32_t) override {}
    long events = 0;
    float last = 0;
    std::string lastText;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 && argc != 5) {
        std::fprintf(stderr, "usage: download_bench <url> <destination> <runs> [pump|nopump]\n");
        return 2;
    }
    const int runs = std::atoi(argv[3]);
    double best = 0;
    for (int run = 0; run < runs; ++run) {
        DeleteFileA(argv[2]);
        PumpingDesktop desktop;
        desktop.pump = argc < 5 || std::string(argv[4]) != "nopump";
        CountingEvents events;
        corvan::clsFTP ftp(&desktop, &events);
        auto start = std::chrono::steady_clock::now();
        bool ok = ftp.DownloadFile(argv[1], argv[2]);
        double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        if (!ok || events.last != 1.0f) {
            std::fprintf(stderr, "download of %s failed\n", argv[1]);
            return 1;
        }
        if (run == 0 || ms < best) best = ms;
        if (run == runs - 1)
            std::printf("events=%ld pumps=%ld last=\"%s\"\n", events.events, desktop.pumps, events.lastText.c_str());
    }
    std::printf("best_ms=%.1f\n", best);
    return 0;
}
