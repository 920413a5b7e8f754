#pragma once

#include "common/ReportSink.h"

#include <QIODevice>

#include <string>

namespace kilnova {

/// A report written straight to a file or standard output, in the line ends given.
class DeviceSink final : public ReportSink {
public:
    DeviceSink(QIODevice& device, std::string lineEnd)
        : mDevice(device)
        , mLineEnd(std::move(lineEnd))
    {
    }
    void write(std::string_view text) override
    {
        mOk = mOk && mDevice.write(text.data(), static_cast<qint64>(text.size())) ==
                         static_cast<qint64>(text.size());
    }
    std::string_view lineEnd() const override { return mLineEnd; }
    bool ok() const { return mOk; }

private:
    QIODevice& mDevice;
    std::string mLineEnd;
    bool mOk = true;
};

} // namespace kilnova
