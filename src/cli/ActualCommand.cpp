#include "cli/ActualCommand.h"

#include "cli/CliProject.h"
#include "cli/CliPrompt.h"
#include "common/MessageTable.h"
#include "database/ActualRefresh.h"
#include "database/ActualStockpileUpdate.h"
#include "database/DatabaseError.h"
#include "optimise/StockpileOptimization.h"

namespace kilnova {

namespace {

/// Asks as the command line does (the question and the answer --yes gave on standard output); every
/// message means the command failed, so all go to standard error.
class RefreshPrompt final : public UserPrompt {
public:
    RefreshPrompt(CliPrompt& questions, QTextStream& err)
        : mQuestions(questions)
        , mErr(err)
    {
    }
    bool askYesNo(const QString& question) override { return mQuestions.askYesNo(question); }
    void showMessage(const QString& text, Icon, const QString& details) override
    {
        mErr << text << '\n';
        if (!details.isEmpty())
            mErr << details << '\n';
    }
    std::optional<QString> chooseFile(const FileRequest&) override { return std::nullopt; }
    std::optional<QString> askText(const QString&, const QString&) override { return std::nullopt; }

private:
    CliPrompt& mQuestions;
    QTextStream& mErr;
};

} // namespace

ActualCommand::ActualCommand(QTextStream& out, QTextStream& err)
    : mOut(out)
    , mErr(err)
{
}

const char* ActualCommand::usage()
{
    return "  actual update PROJECT.knv --into NAME --from \"NAME (SOURCE)\"... [--delete-sources]\n"
           "                                      blend stockpiles into one (NAME alone: the Actual "
           "stockpile)\n"
           "  actual refresh PROJECT.knv (--dsn NAME | --connect STRING) [--yes]\n"
           "                                      replace the Actual stockpiles from a plant database over\n"
           "                                      ODBC (without --yes the question is answered No)\n";
}

int ActualCommand::wrongUsage(const QString& problem)
{
    mProblem = problem;
    return kWrongUsage;
}

int ActualCommand::run(const QStringList& args)
{
    if (args.size() >= 2 && args[0] == QLatin1String("update"))
        return update(args[1], args.mid(2));
    if (args.size() >= 2 && args[0] == QLatin1String("refresh"))
        return refresh(args[1], args.mid(2));
    return wrongUsage(QStringLiteral("actual needs: update|refresh PROJECT.knv"));
}

int ActualCommand::update(const QString& projectPath, const QStringList& args)
{
    ActualStockpileUpdate::Request request;
    std::optional<QString> into;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == QLatin1String("--into") && i + 1 < args.size()) {
            into = args[++i];
        } else if (a == QLatin1String("--from")) {
            bool any = false;
            while (i + 1 < args.size() && !args[i + 1].startsWith(QLatin1String("--"))) {
                const QString text = args[++i];
                const std::optional<RecordKey> key = StockpileOptimization::parseKeyText(text);
                if (!key)
                    return wrongUsage(QStringLiteral("--from \"%1\" is not \"NAME (SOURCE)\"").arg(text));
                request.sources.push_back(*key);
                any = true;
            }
            if (!any)
                return wrongUsage(QStringLiteral("--from needs \"NAME (SOURCE)\""));
        } else if (a == QLatin1String("--delete-sources")) {
            request.deleteSources = true;
        } else {
            return wrongUsage(QStringLiteral("unknown option \"%1\"").arg(a));
        }
    }
    if (!into || request.sources.empty())
        return wrongUsage(QStringLiteral("actual update needs --into NAME and --from \"NAME (SOURCE)\""));
    request.destination =
        StockpileOptimization::parseKeyText(*into).value_or(RecordKey{*into, QStringLiteral("Actual")});

    std::optional<CliProject> project = CliProject::open(projectPath, mErr);
    if (!project)
        return 1;
    try {
        if (const std::optional<QString> refused = ActualStockpileUpdate::apply(*project->db, request)) {
            mErr << *refused << '\n';
            return 1;
        }
    } catch (const DatabaseError& e) {
        mErr << message(Msg::DatabaseOperationFailed) << '\n' << e.message() << '\n';
        return 1;
    }
    mOut << QStringLiteral("Blended %1 stockpile(s) into %2 (%3)%4.\n")
                .arg(request.sources.size())
                .arg(request.destination.name, request.destination.source,
                     request.deleteSources ? QStringLiteral(" and deleted them") : QString());
    return 0;
}

int ActualCommand::refresh(const QString& projectPath, const QStringList& args)
{
    std::optional<QString> connection;
    bool yes = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if ((a == QLatin1String("--dsn") || a == QLatin1String("--connect")) && i + 1 < args.size()) {
            if (connection)
                return wrongUsage(QStringLiteral("give one of --dsn and --connect"));
            connection = args[++i];
        } else if (a == QLatin1String("--yes")) {
            yes = true;
        } else {
            return wrongUsage(QStringLiteral("unknown option \"%1\"").arg(a));
        }
    }
    if (!connection)
        return wrongUsage(QStringLiteral("actual refresh needs --dsn NAME or --connect STRING"));

    std::optional<CliProject> project = CliProject::open(projectPath, mErr);
    if (!project)
        return 1;
    CliPrompt questions(mOut, mErr);
    questions.setAnswerYes(yes);
    RefreshPrompt prompt(questions, mErr);
    const std::optional<int> replaced = ActualRefresh::run(*project->db, prompt, *connection);
    if (!replaced)
        return 1;
    mOut << message(Msg::ActualRefreshed, {QString::number(*replaced), *connection}) << '\n';
    return 0;
}

} // namespace kilnova
