#pragma once

#include "CommandLine.h"
#include "application/UserInterface.h"
#include "foundation/Diagnostic.h"
#include "platform/headless/HeadlessDesktop.h"
#include "skin/PreviewController.h"
#include "windows/UDocWindow.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qorl::tool {

/// The options of all commands that build a template.
namespace SessionOption {
inline constexpr OptionSpec size{"--size", nullptr, "WxH",
                                 "the window's client, instead of the template's size"};
inline constexpr OptionSpec scale{"--scale", nullptr, "F", "device pixels for each logical pixel, 0.25 to 8"};
inline constexpr OptionSpec values{"--values", nullptr, "FILE",
                                   "values, a line \"NAME = NUMBER [in MIN..MAX]\" or NAME = \"TEXT\" each"};
inline constexpr OptionSpec set{"--set", nullptr, "NAME=VALUE",
                                "gives a value a number or a text; may repeat"};
inline constexpr OptionSpec condition{
    "--condition", nullptr, "NAME",
    "makes a condition true, in the document and for its includes; may repeat"};
} // namespace SessionOption

/// A program around one skin: a desktop, the skin's scheme, and a controller that makes up what an
/// application would give. One at a time.
class Session {
public:
    enum class Screen { headless, real };
    /// Whether findings that aren't errors are told too.
    enum class Tell { errors, everything };

    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Reads the options and starts the desktop. An exit status; what is wrong has been told then.
    int start(const CommandLine& line, Screen screen);
    /// Loads the document. An exit status as above; warnings go to standard error too.
    int load(const std::string& path);
    /// Builds the template and opens its window. An exit status as above.
    int open(const std::string& templateName);
    /// `start`, `load` and `open` for the words SKIN and TEMPLATE.
    int run(const CommandLine& line, Screen screen);

    /// Reads the document again and builds the template anew in the open window; values stay, and so does the
    /// focus where the view's name does. False, with the faults told, leaves the window as it was.
    bool reload();

    /// Everything that waits is dispatched, delivered and painted.
    void settle() { userInterface_->settle(); }
    EventLoop& loop() { return userInterface_->loop(); }
    /// Null on a real screen.
    platform::HeadlessDesktop* headless() { return headless_; }
    UDesktop& desktop() { return userInterface_->desktop(); }
    UDocWindow& window() { return *window_; }
    bool isWindowOpen() const { return window_ && window_->isOpen(); }
    UView& content() { return *content_; }
    PreviewController& controller() { return *controller_; }

    /// The view with that id, else with that name, else null.
    UView* findView(std::string_view idOrName);
    /// By name, made up if need be; null when there can be none of that name.
    Binding::Value* value(std::string_view name);
    /// As a user would type it; a text value takes it as it is. False when no value of that name takes it.
    bool setValue(std::string_view name, std::string_view text);
    /// Saves the picture of the window. An exit status; a fault has been told.
    int savePicture(const std::string& path);

    /// What the load and the build found since the last call, told and counted. True when there were errors.
    bool tellDiagnostics(Tell tell);

private:
    int readOptions(const CommandLine& line);
    void tellLoading();
    Ref<UView> build(const std::string& templateName);

    platform::HeadlessDesktop* headless_ = nullptr;
    std::unique_ptr<UserInterface> userInterface_;
    Ref<PreviewController> controller_;
    Ref<UDocWindow> window_;
    Ref<UView> content_;
    CmSize size_;
    double scale_ = 1;
    std::vector<std::string> settings_;
    std::vector<std::string> conditions_;
    std::string templateName_;
    size_t documentFindings_ = 0; ///< Of the document's, told already.
};

/// Writes the file in one step. An exit status; a fault has been told.
int saveText(const std::string& path, std::string_view text);
/// The longest script or list of values.
constexpr int64_t longestText = 16 << 20;
/// False, with the fault told, also for a file of more than `limit` bytes.
bool loadText(const std::string& path, std::string& text, int64_t limit = longestText);

} // namespace qorl::tool
