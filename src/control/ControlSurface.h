#pragma once
#include <string>

namespace corvan {

// What the control's panel draws from: the overall progress with its status
// caption and the transfer line of the current download. The drawing itself
// reads this state; the run session and the engine's events write it.
class ControlSurface {
public:
    float ProgressFraction() const { return progress_; }
    void ProgressFraction(float fraction) { progress_ = fraction; }

    const std::string& LastMessage() const { return lastMessage_; }
    void LastMessage(std::string message) { lastMessage_ = std::move(message); }

    // Percentage of the overall bar: whole part of fraction x 100 + 0.5.
    int ProgressPercent() const;
    // The last message, followed by two blanks, the percentage and "%" when
    // the percentage is above 0.
    std::string StatusCaption() const;
    // Brings the overall bar up to date with the state above.
    void RedrawProgressBar();
    int ProgressRedraws() const { return progressRedraws_; }

    // A non-empty text replaces the stored one, a fraction other than -1
    // replaces the stored fraction; (-1, "") only redraws.
    void DrawTransferLine(const std::string& text, float fraction);
    const std::string& TransferText() const { return transferText_; }
    float TransferFraction() const { return transferFraction_; }
    int TransferPercent() const;        // never below 1
    std::string TransferCaption() const;  // text + " - " + percent + "%"

    bool TransferLineVisible() const { return transferVisible_; }
    void TransferLineVisible(bool visible) { transferVisible_ = visible; }

private:
    float progress_ = 0;
    std::string lastMessage_;
    int progressRedraws_ = 0;
    std::string transferText_;
    float transferFraction_ = 0;
    bool transferVisible_ = true;
};

}  // namespace corvan
