#pragma once

#include <QStringList>
#include <QTextStream>

namespace kilnova {

/// "map PROJECT.knv [--element NAME] [--select NAME…] --out FILE": the quarry map of the project's
/// blasts as a PNG, PDF or SVG file, with the coordinate filter of the blast optimisation's stored
/// settings.
class MapCommand final {
public:
    /// Returned by run() when the arguments are wrong; problem() says how.
    static constexpr int kWrongUsage = -1;

    explicit MapCommand(QTextStream& err);

    /// The exit status: 0 written, 1 the project or the file failed (the reason on standard error).
    int run(const QStringList& args);
    const QString& problem() const { return mProblem; }

    static constexpr int kWidth = 1200;
    static constexpr int kHeight = 860;

private:
    QTextStream& mErr;
    QString mProblem;
};

} // namespace kilnova
