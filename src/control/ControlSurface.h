#pragma once
#include <string>

#include "common/desktop.h"

namespace corvan {

// The parts of the panel that change while the control runs.
enum class SurfacePart { ProgressBar, TransferLine, VersionLine };

// Whoever shows the panel: told each time a part must be drawn again. With
// `refresh` the part must reach the screen before the call returns; without
// it, when the window next paints.
class SurfaceView {
public:
    virtual ~SurfaceView() = default;
    virtual void SurfaceChanged(SurfacePart part, bool refresh) = 0;
};

// What the control's panel draws from: the overall progress with its status
// caption, the transfer line of the current download and the version line.
// The run session and the engine's events write it; the painter reads it.
class ControlSurface {
public:
    explicit ControlSurface(Desktop& desktop) : desktop_(desktop) {}

    void View(SurfaceView* view) { view_ = view; }

    float ProgressFraction() const { return progress_; }
    void ProgressFraction(float fraction) { progress_ = fraction; }

    const std::string& LastMessage() const { return lastMessage_; }
    void LastMessage(std::string message) { lastMessage_ = std::move(message); }

    // Percentage of the overall bar: whole part of fraction x 100 + 0.5.
    int ProgressPercent() const;
    // The share of the bar that is filled: 0 is drawn as 1 and 100 as 99, so
    // the bar never looks quite empty or quite full; the caption keeps the
    // true value.
    int ProgressFillPercent() const;
    // The last message, followed by two blanks, the percentage and "%" when
    // the percentage is above 0.
    std::string StatusCaption() const;
    // Brings the status caption and the overall bar to the screen now.
    void RedrawProgressBar();

    // A non-empty text replaces the stored one, a fraction other than -1
    // replaces the stored fraction; (-1, "") only redraws. The line reaches
    // the screen, then pending window messages run.
    void DrawTransferLine(const std::string& text, float fraction);
    const std::string& TransferText() const { return transferText_; }
    float TransferFraction() const { return transferFraction_; }
    int TransferPercent() const;          // never below 1
    std::string TransferCaption() const;  // text + " - " + percent + "%"

    bool TransferLineVisible() const { return transferVisible_; }
    void TransferLineVisible(bool visible);

    // "Version: " until the control is first shown, then the line of
    // VersionLine().
    const std::string& VersionCaption() const { return versionCaption_; }
    void VersionCaption(std::string caption);

private:
    void Changed(SurfacePart part, bool refresh);

    Desktop& desktop_;
    SurfaceView* view_ = nullptr;
    float progress_ = 0;
    std::string lastMessage_;
    std::string transferText_;
    float transferFraction_ = 0;
    bool transferVisible_ = true;
    std::string versionCaption_ = "Version: ";
};

// "Installer Version: 1.2.3 - OS: <name> v<version> <service pack> (Build: <build>) ".
std::string VersionLine(int major, int minor, int revision, const std::string& osName, const std::string& osVersion,
                        const std::string& servicePack, const std::string& build);

}  // namespace corvan
