#include "cli/CombineCommand.h"

#include "combine/BlastCombiner.h"
#include "common/DeviceSink.h"
#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "project/CKilnovaDoc.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kilnova {

namespace {

/// Keeps what the core says so that only a failure reaches the terminal: opening a project also
/// tells the database status, which has no place in a printed report.
class CollectingPrompt final : public UserPrompt {
public:
    struct Shown {
        QString text;
        Icon icon;
        QString details;
    };
    std::vector<Shown> shown;

    bool askYesNo(const QString&) override { return false; }
    void showMessage(const QString& text, Icon icon, const QString& details) override
    {
        shown.push_back({text, icon, details});
    }
    std::optional<QString> chooseFile(const FileRequest&) override { return std::nullopt; }
    std::optional<QString> askText(const QString&, const QString&) override { return std::nullopt; }
};

} // namespace

CombineCommand::CombineCommand(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

int CombineCommand::run(const QStringList& args)
{
    const bool all = args.size() == 2 && args[1] == QLatin1String("--all");
    const bool select = args.size() >= 3 && args[1] == QLatin1String("--select");
    if (!all && !select) {
        mProblem = QStringLiteral("combine needs PROJECT.knv and --select NAME... or --all");
        return kWrongUsage;
    }
    const QStringList names = select ? args.mid(2) : QStringList();

    // Failures are told in the order they happened, with their details.
    CollectingPrompt ui;
    const auto fail = [this, &ui](std::size_t from) {
        for (std::size_t i = from; i < ui.shown.size(); ++i) {
            if (ui.shown[i].icon == UserPrompt::Icon::Information && from == 0)
                continue; // the database status of a project that opened
            mErr << ui.shown[i].text << '\n';
            if (!ui.shown[i].details.isEmpty())
                mErr << ui.shown[i].details << '\n';
        }
        mErr.flush();
        return 1;
    };

    CKilnovaDoc doc;
    const QString project = QDir::cleanPath(QFileInfo(args[0]).absoluteFilePath());
    if (!doc.openDocument(project, ui) || !doc.isConnected()) {
        if (ui.shown.empty())
            ui.showMessage(message(Msg::NotConnected), UserPrompt::Icon::Error, {});
        return fail(0);
    }
    const std::size_t opened = ui.shown.size();
    BlastCombiner combiner(*doc.database(), doc.settings().combination, ui);
    if (!combiner.open())
        return fail(opened);
    if (all)
        combiner.selectAll();
    for (const QString& name : names) {
        combiner.setSelected(name, true);
        if (!combiner.isSelected(name)) {
            combiner.close();
            ui.showMessage(message(Msg::BlastNotInSourceList, {name}), UserPrompt::Icon::Error, {});
            return fail(opened);
        }
    }
    // The report goes to standard output as it is built, in plain line ends.
    mOut.flush();
    QFile standardOutput;
    QIODevice* device = mOut.device();
    if (device == nullptr) {
        standardOutput.open(stdout, QIODevice::WriteOnly);
        device = &standardOutput;
    }
    DeviceSink report(*device, "\n");
    const std::optional<CombinationOutcome> outcome = combiner.combine(report);
    combiner.close();
    if (!outcome)
        return fail(opened);
    report.write("\n");
    return 0;
}

} // namespace kilnova
