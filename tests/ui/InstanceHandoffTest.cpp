#include "UiTests.h"

#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/CMainFrame.h"
#include "ui/InstanceHandoff.h"

#include <QDialog>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <chrono>
#include <future>

namespace kilnova::test {

namespace {

using Decoded = InstanceHandoff::Decoded;
using Sent = InstanceHandoff::Sent;
using Start = InstanceHandoff::Start;

const QByteArray kTag = QByteArrayLiteral("KILNOVA-OPEN/1\n");

QByteArray framed(const QByteArray& payload, quint32 length)
{
    QByteArray size(4, '\0');
    qToBigEndian(length, size.data());
    return kTag + size + payload;
}

/// Runs work on another thread, as another process would, while this thread answers as the
/// running Kilnova does.
template <typename Work> auto whileServing(Work work)
{
    auto result = std::async(std::launch::async, work);
    while (result.wait_for(std::chrono::milliseconds(0)) != std::future_status::ready)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return result.get();
}

QString makeProject(const QTemporaryDir& dir, const QString& name)
{
    CKilnovaDoc doc;
    ScriptedPrompt ui;
    ui.fileAnswers = {dir.filePath(name + ".kndb")};
    doc.createDatabase(ui);
    const QString project = dir.filePath(name + ".knv");
    doc.saveDocument(project, ui);
    return project;
}

} // namespace

class InstanceHandoffTest : public QObject {
    Q_OBJECT

    struct Window {
        CKilnovaDoc doc;
        ScriptedPrompt* ui;
        std::unique_ptr<CMainFrame> frame;
        Window()
        {
            auto prompt = std::make_unique<ScriptedPrompt>();
            ui = prompt.get();
            frame = std::make_unique<CMainFrame>(doc, std::move(prompt));
        }
    };

private slots:
    void requestsAreTakenWholeOrRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("decoded");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QByteArray>("rest");
        const QByteArray second = InstanceHandoff::encode({"/b.knv"});
        QTest::newRow("one project") << InstanceHandoff::encode({"/srv/plant/a.knv"})
                                     << int(Decoded::Complete) << QStringList{"/srv/plant/a.knv"}
                                     << QByteArray();
        QTest::newRow("none: only show the window")
            << InstanceHandoff::encode({}) << int(Decoded::Complete) << QStringList{} << QByteArray();
        const QStringList odd{"/home/jürgen/it's \"north\" pit.knv", "/tmp/line\nbreak.knv"};
        QTest::newRow("quotes, accents and a line break in names")
            << InstanceHandoff::encode(odd) << int(Decoded::Complete) << odd << QByteArray();
        QTest::newRow("two requests in one read: the second stays")
            << InstanceHandoff::encode({"/a.knv"}) + second << int(Decoded::Complete) << QStringList{"/a.knv"}
            << second;
        QTest::newRow("a stranger's bytes")
            << QByteArray("GET / HTTP/1.1\r\n\r\n") << int(Decoded::Invalid) << QStringList{} << QByteArray();
        QTest::newRow("longer than any list of paths")
            << framed({}, 0x7fffffffu) << int(Decoded::Invalid) << QStringList{} << QByteArray();
        QTest::newRow("an empty name")
            << framed(QByteArray("\0\0", 2), 2) << int(Decoded::Invalid) << QStringList{} << QByteArray();
        QTest::newRow("a name without its end")
            << framed("a.knv", 5) << int(Decoded::Invalid) << QStringList{} << QByteArray();
    }

    void requestsAreTakenWholeOrRefused()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, decoded);
        QFETCH(QStringList, files);
        QFETCH(QByteArray, rest);
        QStringList received{"left from before"};
        QCOMPARE(int(InstanceHandoff::decode(bytes, received)), decoded);
        if (decoded == int(Decoded::Complete)) {
            QCOMPARE(received, files);
            QCOMPARE(bytes, rest);
        }
    }

    // A request arrives in pieces as the socket delivers it: no piece short of the whole is taken.
    void everyPartOfARequestWaitsForTheRest()
    {
        const QByteArray whole = InstanceHandoff::encode({"/srv/plant/a.knv", "/b.knv"});
        for (qsizetype size = 0; size < whole.size(); ++size) {
            QByteArray part = whole.first(size);
            QStringList files;
            QCOMPARE(int(InstanceHandoff::decode(part, files)), int(Decoded::Incomplete));
            QCOMPARE(part.size(), size);
        }
    }

    void aSecondStartHandsItsFilesOverMadeAbsolute()
    {
        QTemporaryDir dir;
        const QString socket = dir.filePath("kilnova.socket");
        QCOMPARE(int(InstanceHandoff::send(socket, {"/a.knv"}, 500)), int(Sent::NoneRunning));

        InstanceHandoff first(socket);
        QSignalSpy received(&first, &InstanceHandoff::filesReceived);
        QCOMPARE(int(first.start({})), int(Start::Primary));
        const Start second = whileServing([socket] { return InstanceHandoff(socket).start({"plant.knv"}); });
        QCOMPARE(int(second), int(Start::HandedOver));
        QCOMPARE(received.size(), 1);
        QCOMPARE(received[0][0].toStringList(), QStringList{QDir::current().absoluteFilePath("plant.knv")});

        // A start without a file only brings the window forward.
        QCOMPARE(int(whileServing([socket] { return InstanceHandoff::send(socket, {}, 5000); })),
                 int(Sent::Delivered));
        QCOMPARE(received.size(), 2);
        QCOMPARE(received[1][0].toStringList(), QStringList{});
    }

    // What a Kilnova that did not end normally left at the socket's place is taken over.
    void aLeftoverAtTheSocketIsReplaced()
    {
        QTemporaryDir dir;
        const QString socket = dir.filePath("kilnova.socket");
        QFile leftover(socket);
        QVERIFY(leftover.open(QIODevice::WriteOnly));
        leftover.close();
        InstanceHandoff first(socket);
        QSignalSpy received(&first, &InstanceHandoff::filesReceived);
        QCOMPARE(int(first.start({})), int(Start::Primary));
        QCOMPARE(int(whileServing([socket] { return InstanceHandoff::send(socket, {"/a.knv"}, 5000); })),
                 int(Sent::Delivered));
        QCOMPARE(received.size(), 1);
    }

    void aStrangerIsTurnedAwayAndKilnovaGoesOnListening()
    {
        QTemporaryDir dir;
        const QString socket = dir.filePath("kilnova.socket");
        InstanceHandoff first(socket);
        QSignalSpy received(&first, &InstanceHandoff::filesReceived);
        QCOMPARE(int(first.start({})), int(Start::Primary));
        const bool droppedAtOnce = whileServing([socket] {
            QLocalSocket stranger;
            stranger.connectToServer(socket);
            if (!stranger.waitForConnected(5000))
                return false;
            stranger.write("hello, who is there?\n");
            stranger.waitForBytesWritten(5000);
            return stranger.waitForDisconnected(5000) && stranger.readAll().isEmpty();
        });
        QVERIFY(droppedAtOnce);
        QCOMPARE(received.size(), 0);
        QCOMPARE(int(whileServing([socket] { return InstanceHandoff::send(socket, {"/a.knv"}, 5000); })),
                 int(Sent::Delivered));
        QCOMPARE(received.size(), 1);
    }

    // A Kilnova inside a long computation answers late; the request waits for it and is not lost.
    void aBusyKilnovaReadsTheRequestWhenItIsDone()
    {
        QTemporaryDir dir;
        const QString socket = dir.filePath("kilnova.socket");
        InstanceHandoff first(socket);
        QSignalSpy received(&first, &InstanceHandoff::filesReceived);
        QCOMPARE(int(first.start({})), int(Start::Primary));
        // This thread does not serve while it sends: the running Kilnova is busy.
        QCOMPARE(int(InstanceHandoff::send(socket, {"/a.knv"}, 300)), int(Sent::Queued));
        QTRY_COMPARE(received.size(), 1);
        QCOMPARE(received[0][0].toStringList(), QStringList{"/a.knv"});
    }

    // A dialog of the window is open: the handed-over project waits until the user closes it.
    void aHandedOverProjectWaitsForTheOpenDialog()
    {
        QTemporaryDir dir;
        const QString project = makeProject(dir, "north");
        Window w;
        w.frame->show();
        QDialog dialog(w.frame.get());
        dialog.setWindowModality(Qt::ApplicationModal);
        dialog.show();
        QTRY_VERIFY(QApplication::activeModalWidget() == &dialog);
        w.frame->openRequested({project});
        QTest::qWait(600);
        QVERIFY(w.doc.filePath().isEmpty());
        dialog.close();
        QTRY_COMPARE(w.doc.filePath(), project);
        QVERIFY(w.doc.isConnected());
    }

    void aHandedOverFileThatIsNoProjectLeavesTheOpenOneAlone()
    {
        QTemporaryDir dir;
        const QString project = makeProject(dir, "north");
        const QString notes = dir.filePath("notes.knv");
        QFile file(notes);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("Blast LS386-03: 43 t\n");
        file.close();
        Window w;
        QVERIFY(w.frame->openProject(project));
        w.ui->messages.clear();
        w.frame->openRequested({notes});
        QTRY_COMPARE(w.ui->messages.size(), std::size_t{1});
        QCOMPARE(w.ui->messages[0].text, QStringLiteral("The project %1 cannot be opened.").arg(notes));
        QVERIFY(w.ui->messages[0].details.contains("is not a Kilnova project"));
        QCOMPARE(w.doc.filePath(), project);
        QVERIFY(w.doc.isConnected());
    }

    // The real program, started as the file manager starts it, hands its project to this window,
    // which asks about its unsaved changes first.
    void theProgramHandsADoubleClickedProjectToTheOpenWindow()
    {
        QTemporaryDir runtime; // the user's private runtime folder: mode 0700
        QTemporaryDir dir;
        const QString north = makeProject(dir, "north");
        const QString south = makeProject(dir, "south");
        Window w;
        QVERIFY(w.frame->openProject(north));
        w.doc.setModified();
        w.ui->messages.clear();
        InstanceHandoff handoff(runtime.filePath("kilnova.socket"));
        QCOMPARE(int(handoff.start({})), int(Start::Primary));
        connect(&handoff, &InstanceHandoff::filesReceived, w.frame.get(), &CMainFrame::openRequested);

        auto doubleClick = [&](const QString& relativePath) {
            QProcess kilnova;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert("XDG_RUNTIME_DIR", runtime.path());
            env.insert("QT_QPA_PLATFORM", "offscreen");
            kilnova.setProcessEnvironment(env);
            kilnova.setWorkingDirectory(dir.path());
            kilnova.start(QStringLiteral(KILNOVA_GUI), {relativePath});
            QTRY_VERIFY_WITH_TIMEOUT(kilnova.state() == QProcess::NotRunning, 20000);
            QCOMPARE(kilnova.exitStatus(), QProcess::NormalExit);
            QCOMPARE(kilnova.exitCode(), 0);
        };

        w.ui->yesNoCancelAnswers = {UserPrompt::Answer::Cancel};
        doubleClick("south.knv");
        QTRY_COMPARE(w.ui->questions, QStringList{"Save changes to north.knv?"});
        QCOMPARE(w.doc.filePath(), north);

        w.ui->yesNoCancelAnswers = {UserPrompt::Answer::No};
        doubleClick("south.knv");
        QTRY_COMPARE(w.doc.filePath(), south);
        QCOMPARE(w.ui->questions.size(), 2);
        QVERIFY(w.doc.isConnected());
        QCOMPARE(w.frame->windowTitle(), QStringLiteral("south.knv[*] - Kilnova"));
    }
};

static RegisterUiTest<InstanceHandoffTest> registerInstanceHandoffTest("InstanceHandoffTest");

} // namespace kilnova::test

#include "InstanceHandoffTest.moc"
