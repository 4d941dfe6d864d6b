#include "Session.h"
#include "foundation/CmObject.h"
#include "foundation/messages/UTimer.h"

#include <cstdio>
#include <filesystem>
#include <map>

namespace qorl::tool {

namespace {

/// How often the files are looked at.
constexpr int32_t watchPeriod = 250;

constexpr OptionSpec options[] = {
    {"--watch", "-w", nullptr, "reloads when a file of the skin's folder is saved"},
    SessionOption::size,
    SessionOption::values,
    SessionOption::set,
    SessionOption::condition,
};

/// Reloads the session's skin whenever something in its folder has another time of change.
class FolderWatch : public CmObject {
    QORL_CLASS(FolderWatch, CmObject)

public:
    FolderWatch(Session& session, const std::string& skin)
        : session_(session), folder_(std::filesystem::absolute(skin).parent_path()), times_(look()),
          timer_(make<UTimer>(this, watchPeriod)) {
        timer_->start();
    }

    int32_t handleMessage(FMessage*) override {
        Times now = look();
        if (now == times_)
            return handled;
        times_ = std::move(now);
        if (session_.reload())
            std::fputs("qorl: reloaded\n", stderr);
        return handled;
    }

private:
    using Times = std::map<std::string, std::filesystem::file_time_type>;

    Times look() const {
        Times times;
        std::error_code error;
        std::filesystem::recursive_directory_iterator entries(folder_, error);
        for (const auto end = std::filesystem::recursive_directory_iterator(); !error && entries != end;
             entries.increment(error)) {
            std::error_code entryError;
            if (entries->is_regular_file(entryError))
                times.emplace(entries->path().string(), entries->last_write_time(entryError));
        }
        return times;
    }

    Session& session_;
    std::filesystem::path folder_;
    Times times_;
    Ref<UTimer> timer_;
};

int show(const CommandLine& line) {
    Session session;
    if (const int status = session.run(line, Session::Screen::real))
        return status;
    Ref<FolderWatch> watch;
    if (line.has("--watch"))
        watch = make<FolderWatch>(session, line.positional()[0]);
    while (session.isWindowOpen() && session.loop().step() != EventLoop::Step::ended) {}
    return ExitStatus::success;
}

} // namespace

const Command showCommand{
    "show",
    "SKIN TEMPLATE",
    "Opens a template in a live window, until that is closed.",
    "  qorl show skin.xml Panel\n  qorl show skin.xml Panel --watch\n",
    options,
    2,
    2,
    &show,
};

} // namespace qorl::tool
