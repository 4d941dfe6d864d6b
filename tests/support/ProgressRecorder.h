#pragma once

#include "foundation/text/ConstString.h"
#include "persistence/streams/StreamProgress.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace qorl {

/// Writes down what a long operation tells of its progress, and cancels it where the test says.
class ProgressRecorder : public StreamProgress {
public:
    static constexpr int64_t never = std::numeric_limits<int64_t>::max();

    explicit ProgressRecorder(int64_t cancelAt = never) : cancelAt(cancelAt) {}

    bool isCancelled(const void* buffer, int64_t count) override {
        lastBuffer = buffer;
        asked.push_back(count);
        return place >= cancelAt || reported.size() >= mostReports;
    }
    int64_t position() const override { return place; }
    void setPosition(int64_t position) override { place = position; }
    int64_t total() const override { return all; }
    void report(double fraction) override { reported.push_back(fraction); }
    void setText(const ConstString& told) override { text = told.toUtf8(); }

    /// The place at which the operation is cancelled.
    int64_t cancelAt;
    /// Or the number of reports.
    size_t mostReports = std::numeric_limits<size_t>::max();
    int64_t all = 0;

    int64_t place = 0;
    const void* lastBuffer = nullptr;
    std::vector<int64_t> asked;
    std::vector<double> reported;
    std::string text;
};

} // namespace qorl
