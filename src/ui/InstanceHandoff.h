#pragma once

#include <QObject>
#include <QStringList>

class QLocalServer;
class QLocalSocket;

namespace kilnova {

/// One Kilnova window per user. A second start (a double-click on a project in the file manager
/// while Kilnova runs) hands its project file to the window already open and ends, so that the
/// open window asks about its unsaved changes before it opens the other project. The two talk over
/// a local socket in the user's private runtime folder.
class InstanceHandoff final : public QObject {
    Q_OBJECT
public:
    enum class Start {
        Primary,    ///< no Kilnova was running: this one listens for later starts
        HandedOver, ///< a running Kilnova took the files: this start ends
        Alone       ///< could not listen (see error()): this one runs without taking later starts
    };
    enum class Sent { NoneRunning, Delivered, Queued };
    enum class Decoded { Incomplete, Complete, Invalid };

    explicit InstanceHandoff(QString socketPath = defaultSocketPath(), QObject* parent = nullptr);
    ~InstanceHandoff() override;

    /// kilnova.socket in the user's runtime folder ($XDG_RUNTIME_DIR).
    static QString defaultSocketPath();

    /// Hands files (made absolute here, since the running Kilnova has another working folder) to a
    /// running Kilnova, else listens for later starts. Two starts at once are put in line by a
    /// lock file beside the socket.
    Start start(const QStringList& files);
    QString error() const { return mError; }

    /// Sends files to the Kilnova listening at socketPath and waits up to timeoutMs for its receipt.
    /// Queued: it is running but busy (a long computation); it reads them when it is done.
    static Sent send(const QString& socketPath, const QStringList& files, int timeoutMs);

    /// One request on the wire: a tag, a 4-byte big-endian length, the UTF-8 paths each ended by NUL.
    static QByteArray encode(const QStringList& files);
    /// Takes one request off the front of buffer into files when it is complete. Invalid: not a
    /// Kilnova request, or longer than any list of paths can be.
    static Decoded decode(QByteArray& buffer, QStringList& files);

signals:
    /// Another start handed these absolute paths over; empty: it only asked to see the window.
    void filesReceived(const QStringList& files);

private:
    void acceptConnections();
    void readRequest(QLocalSocket* socket);

    QString mSocketPath;
    QLocalServer* mServer = nullptr;
    QString mError;
};

} // namespace kilnova
