#include "Session.h"

#include "binding/Value.h"
#include "foundation/Cast.h"
#include "graphics/GraphicsFactory.h"
#include "persistence/files/FNPath.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "schemes/GlobalSchemes.h"
#include "skin/UIWizard.h"
#include "skin/ValueRegistry.h"
#include "views/UBaseView.h"
#include "views/ViewPredicate.h"

#include <algorithm>
#include <cstdio>

namespace qorl::tool {

namespace {

constexpr double smallestScale = 0.25;
constexpr double largestScale = 8;
/// Where windows open on the headless screen.
constexpr CmPoint windowPlace{40, 40};

/// A screen on which the largest window that can be asked for has its place.
platform::HeadlessSettings headlessScreen(double scale) {
    platform::HeadlessSettings settings;
    platform::HeadlessMonitor& monitor = settings.monitors.front();
    monitor.scale = scale;
    monitor.bounds = monitor.workArea = {0, 0, 20000, 20000};
    return settings;
}

} // namespace

Session::Session() = default;

Session::~Session() {
    if (window_ && window_->isOpen())
        window_->willClose(true);
    if (userInterface_)
        settle();
    content_.reset();
    window_.reset();
    controller_.reset();
    userInterface_.reset();
    platform::stop();
}

int Session::readOptions(const CommandLine& line) {
    std::string error;
    if (!line.readSize("--size", size_, error) ||
        !line.readNumber("--scale", smallestScale, largestScale, scale_, error))
        return complain(ExitStatus::wrongUsage, error);
    settings_ = line.allOf("--set");
    for (const std::string& setting : settings_)
        if (setting.find('=') == std::string::npos)
            return complain(ExitStatus::wrongUsage, "--set is NAME=VALUE, not \"" + setting + '"');
    conditions_ = line.allOf("--condition");
    controller_ = make<PreviewController>();
    if (!line.has("--values"))
        return ExitStatus::success;
    const std::string path = line.valueOf("--values");
    std::string text;
    if (!loadText(path, text))
        return ExitStatus::badInput;
    DiagnosticList faults;
    const bool understood = controller_->readValues(text, path, faults);
    for (const Diagnostic& fault : faults.all())
        std::fprintf(stderr, "%s\n", toText(fault).c_str());
    return understood ? ExitStatus::success : ExitStatus::badInput;
}

int Session::start(const CommandLine& line, Screen screen) {
    if (const int status = readOptions(line))
        return status;
    if (screen == Screen::headless) {
        headless_ = new platform::HeadlessDesktop(headlessScreen(scale_));
        platform::start(headless_);
    } else {
        std::string error;
        if (!platform::start(platform::Backend::automatic, error))
            return complain(ExitStatus::badInput, error);
    }
    userInterface_ = std::make_unique<UserInterface>();
    GlobalSchemes::resetAll();
    return ExitStatus::success;
}

bool Session::tellDiagnostics(Tell tell) {
    bool hasErrors = false;
    UIWizard* wizard = UIWizard::instance();
    const auto tellAll = [&](const std::vector<Diagnostic>& diagnostics) {
        for (const Diagnostic& diagnostic : diagnostics) {
            hasErrors |= diagnostic.severity == Severity::error;
            if (tell == Tell::everything || diagnostic.severity == Severity::error)
                std::fprintf(stderr, "%s\n", toText(diagnostic).c_str());
        }
    };
    const std::vector<Diagnostic>& found = wizard->description()->diagnostics();
    tellAll({found.begin() + static_cast<ptrdiff_t>(std::min(documentFindings_, found.size())), found.end()});
    documentFindings_ = found.size();
    tellAll(wizard->diagnostics());
    wizard->clearDiagnostics();
    return hasErrors;
}

void Session::tellLoading() {
    UIWizard* wizard = UIWizard::instance();
    for (const Diagnostic& diagnostic : wizard->loader().diagnostics())
        std::fprintf(stderr, "%s\n", toText(diagnostic).c_str());
    documentFindings_ = wizard->description()->diagnostics().size();
}

int Session::load(const std::string& path) {
    UIWizard* wizard = UIWizard::instance();
    for (const std::string& condition : conditions_)
        wizard->setCondition(condition);
    const bool loaded = wizard->load(FUrl(FNPath(ConstString(path.c_str()))));
    tellLoading();
    return loaded ? ExitStatus::success : ExitStatus::badInput;
}

Ref<UView> Session::build(const std::string& templateName) {
    UIWizard* wizard = UIWizard::instance();
    Ref<UView> view = wizard->createView(templateName, controller_.get(), nullptr);
    if (!view)
        std::fprintf(stderr, "qorl: the document has no template \"%s\"\n", templateName.c_str());
    return tellDiagnostics(Tell::everything) ? nullptr : view;
}

int Session::open(const std::string& templateName) {
    templateName_ = templateName;
    content_ = build(templateName);
    if (!content_)
        return ExitStatus::badInput;
    const auto* base = cast<UBaseView>(content_);
    const uint32_t style =
        base && base->getWindowStyle() ? base->getWindowStyle() : uint32_t{styleWindowPreset};
    CmSize size = content_->getFrameSize();
    if (size_.isEmpty() && size.isEmpty()) {
        std::fprintf(stderr, "qorl: template \"%s\" has no size; give one with --size\n",
                     templateName.c_str());
        return ExitStatus::badInput;
    }
    window_ = make<UDocWindow>(CmRect::ofSize(windowPlace, size), style, content_->getTitle());
    content_->setFrame(CmRect::ofSize({}, size), false);
    content_->setAttach(viewAttachAll);
    window_->addSubView(content_);
    if (!size_.isEmpty())
        window_->setSize(size_);
    window_->show();
    for (const std::string& setting : settings_) {
        const size_t equals = setting.find('=');
        if (!setValue(std::string_view(setting).substr(0, equals),
                      std::string_view(setting).substr(equals + 1)))
            return complain(ExitStatus::badInput, "no value takes \"" + setting + '"');
    }
    settle();
    return ExitStatus::success;
}

int Session::run(const CommandLine& line, Screen screen) {
    if (const int status = start(line, screen))
        return status;
    if (const int status = load(line.positional()[0]))
        return status;
    return open(line.positional()[1]);
}

bool Session::reload() {
    UIWizard* wizard = UIWizard::instance();
    const bool reloaded = wizard->reload();
    tellLoading();
    const Ref<UView> view = reloaded ? build(templateName_) : nullptr;
    if (!view)
        return false;
    const UView* focus = desktop().getFocus();
    const std::string focused(focus ? focus->getItem().name() : std::string_view());
    view->setFrame(content_->getFrameRect(), false);
    view->setAttach(viewAttachAll);
    window_->removeSubView(content_.get());
    content_ = view;
    window_->addSubView(content_);
    if (UView* again = focused.empty() ? nullptr : findView(focused))
        desktop().setFocus(again);
    window_->invalidateAll();
    return true;
}

UView* Session::findView(std::string_view idOrName) {
    return window_->findSubView(
        viewsWhere([&](const UView* view) { return view->getItem().name() == idOrName; }));
}

Binding::Value* Session::value(std::string_view name) {
    if (const ValueRegistry* registry = ValueRegistry::peek())
        if (Binding::Value* defined = registry->find(name, controller_.get()))
            return defined;
    return controller_->getValue(std::string(name).c_str());
}

bool Session::setValue(std::string_view name, std::string_view text) {
    const ValueRegistry* registry = ValueRegistry::peek();
    Binding::Value* defined = registry ? registry->find(name, controller_.get()) : nullptr;
    if (!defined)
        return controller_->setValue(name, text);
    const String wide(text);
    defined->bound()->setValueText(wide.text16());
    return true;
}

int Session::savePicture(const std::string& path) {
    settle();
    const platform::PixelSurface surface = window_->getPlatformWindow()->getSurface();
    GraphicsFactory* factory = getGraphicsFactory();
    const Ref<GraphicsImage> image = factory->getBitmapFactory()->wrapPixels(surface);
    std::vector<std::byte> file;
    ImageCodec* png = factory->getImageCodecs()->findByExtension("png");
    if (!image || !png->encode(*image, file))
        return complain(ExitStatus::badInput, "there is no memory for the picture");
    const auto* bytes = reinterpret_cast<const uint8_t*>(file.data());
    if (const platform::FileError error = platform::replaceFile(path, {bytes, file.size()}))
        return complain(ExitStatus::badInput, path + ": " + error.getText());
    return ExitStatus::success;
}

int saveText(const std::string& path, std::string_view text) {
    if (path == "-") {
        const bool isWritten =
            std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
        return isWritten ? int{ExitStatus::success}
                         : complain(ExitStatus::badInput, "standard output does not take the text");
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    if (const platform::FileError error = platform::replaceFile(path, {bytes, text.size()}))
        return complain(ExitStatus::badInput, path + ": " + error.getText());
    return ExitStatus::success;
}

bool loadText(const std::string& path, std::string& text, int64_t limit) {
    if (path == "-") {
        char block[4096];
        // One byte more than it may have is enough to know.
        for (size_t got = 1; got > 0 && static_cast<int64_t>(text.size()) <= limit;) {
            got = std::fread(block, 1, sizeof block, stdin);
            text.append(block, std::min(got, static_cast<size_t>(limit) + 1 - text.size()));
        }
        if (static_cast<int64_t>(text.size()) <= limit)
            return true;
        complain(ExitStatus::badInput, "standard input: has more than " + std::to_string(limit) + " bytes");
        return false;
    }
    std::vector<uint8_t> bytes;
    if (const platform::FileError error = platform::readWholeFile(path, bytes, limit)) {
        complain(ExitStatus::badInput, path + ": " + error.getText());
        return false;
    }
    text.assign(bytes.begin(), bytes.end());
    return true;
}

} // namespace qorl::tool
