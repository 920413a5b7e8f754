#include "cli/CombineCommand.h"

#include "cli/CliProject.h"
#include "cli/CliWording.h"
#include "cli/CombineOptions.h"
#include "combine/BlastCombiner.h"
#include "common/DeviceSink.h"
#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "project/ProjectFileError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kilnova {

namespace {

/// Keeps what the core says, to write it to the error stream in the words of the command line.
class CollectingPrompt final : public UserPrompt {
public:
    struct Shown {
        QString text;
        QString details;
    };
    std::vector<Shown> shown;

    bool askYesNo(const QString&) override { return false; }
    void showMessage(const QString& text, Icon, const QString& details) override
    {
        shown.push_back({text, details});
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

const char* CombineCommand::usage()
{
    return CombineOptions::usage();
}

int CombineCommand::run(const QStringList& args)
{
    CombineOptions options;
    if (const std::optional<QString> problem = options.parse(args)) {
        mProblem = *problem;
        return kWrongUsage;
    }
    std::optional<CliProject> project = CliProject::open(options.project, mErr);
    if (!project)
        return 1;
    CCombinationParameters& parameters = project->settings.combination;
    options.applyTo(parameters);

    // Only the combination settings change in the file; the rest is written back as it was read.
    const auto save = [this, &project, &parameters] {
        try {
            ProjectFile::Loaded stored = ProjectFile::load(project->path);
            stored.settings.combination = parameters;
            ProjectFile::save(stored.settings, project->path);
        } catch (const ProjectFileError& e) {
            mErr << message(Msg::CannotSaveProject, {QDir::toNativeSeparators(project->path)}) << '\n'
                 << e.what() << '\n';
            return false;
        }
        return true;
    };
    if (!options.all && options.selected.isEmpty())
        return save() ? 0 : 1;

    CollectingPrompt ui;
    const auto fail = [this, &ui] {
        for (const CollectingPrompt::Shown& s : ui.shown) {
            mErr << CliWording::reword(s.text) << '\n';
            if (!s.details.isEmpty())
                mErr << s.details << '\n';
        }
        mErr.flush();
        return 1;
    };
    BlastCombiner combiner(*project->db, parameters, ui);
    if (!combiner.open())
        return fail();
    if (options.period)
        combiner.setPeriod(*options.period);
    if (options.all)
        combiner.selectAll();
    for (const QString& name : options.selected) {
        combiner.setSelected(name, true);
        if (!combiner.isSelected(name)) {
            combiner.close();
            ui.showMessage(message(Msg::BlastNotInSourceList, {name}), UserPrompt::Icon::Error, {});
            return fail();
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
        return fail();
    report.write("\n");
    if (options.save && !save())
        return 1;
    return 0;
}

} // namespace kilnova
