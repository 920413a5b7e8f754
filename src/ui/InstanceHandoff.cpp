#include "ui/InstanceHandoff.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QStandardPaths>
#include <QtEndian>

namespace kilnova {

namespace {

const QByteArray kTag = QByteArrayLiteral("KILNOVA-OPEN/1\n");
constexpr int kLengthSize = 4;
// Far beyond any list of paths a start is given; a request claiming more is not ours.
constexpr quint32 kMaximumLength = 1u << 20;
const QByteArray kReceipt = QByteArrayLiteral("OK\n");
const char* const kBufferProperty = "kilnovaRequest";

} // namespace

InstanceHandoff::InstanceHandoff(QString socketPath, QObject* parent)
    : QObject(parent)
    , mSocketPath(std::move(socketPath))
{
}

InstanceHandoff::~InstanceHandoff() = default;

QString InstanceHandoff::defaultSocketPath()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation))
        .filePath(QStringLiteral("kilnova.socket"));
}

QByteArray InstanceHandoff::encode(const QStringList& files)
{
    QByteArray payload;
    for (const QString& file : files)
        payload += file.toUtf8() + '\0';
    QByteArray length(kLengthSize, '\0');
    qToBigEndian(static_cast<quint32>(payload.size()), length.data());
    return kTag + length + payload;
}

InstanceHandoff::Decoded InstanceHandoff::decode(QByteArray& buffer, QStringList& files)
{
    const qsizetype tagPart = std::min(buffer.size(), kTag.size());
    if (buffer.first(tagPart) != kTag.first(tagPart))
        return Decoded::Invalid;
    if (buffer.size() < kTag.size() + kLengthSize)
        return Decoded::Incomplete;
    const quint32 length = qFromBigEndian<quint32>(buffer.constData() + kTag.size());
    if (length > kMaximumLength)
        return Decoded::Invalid;
    const qsizetype end = kTag.size() + kLengthSize + qsizetype(length);
    if (buffer.size() < end)
        return Decoded::Incomplete;
    const QByteArray payload = buffer.sliced(kTag.size() + kLengthSize, length);
    // Every path ends with NUL, and no path is empty.
    if (!payload.isEmpty() &&
        (!payload.endsWith('\0') || payload.startsWith('\0') || payload.contains(QByteArrayView("\0\0", 2))))
        return Decoded::Invalid;
    QStringList received;
    for (const QByteArray& path : payload.split('\0').mid(0, payload.count('\0')))
        received << QString::fromUtf8(path);
    files = received;
    buffer.remove(0, end);
    return Decoded::Complete;
}

InstanceHandoff::Sent InstanceHandoff::send(const QString& socketPath, const QStringList& files,
                                            int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(timeoutMs))
        return Sent::NoneRunning;
    socket.write(encode(files));
    if (!socket.waitForBytesWritten(timeoutMs))
        return Sent::Queued;
    // A Kilnova inside a long computation reads the request only when it is done; the request
    // waits in the socket for it all the same.
    QByteArray receipt;
    while (receipt.size() < kReceipt.size() && socket.waitForReadyRead(timeoutMs))
        receipt += socket.readAll();
    return receipt.startsWith(kReceipt) ? Sent::Delivered : Sent::Queued;
}

InstanceHandoff::Start InstanceHandoff::start(const QStringList& files)
{
    QStringList absolute;
    for (const QString& file : files)
        absolute << QFileInfo(file).absoluteFilePath();

    QLockFile lock(mSocketPath + QStringLiteral(".lock"));
    // A start stuck for longer than this is not waited for: better two windows than none.
    lock.tryLock(5000);
    if (send(mSocketPath, absolute, 2000) != Sent::NoneRunning)
        return Start::HandedOver;

    // Nobody answers: a socket file left there is a leftover of a Kilnova that did not end normally.
    QLocalServer::removeServer(mSocketPath);
    auto* server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(mSocketPath)) {
        mError = QStringLiteral("cannot listen at %1: %2").arg(mSocketPath, server->errorString());
        delete server;
        return Start::Alone;
    }
    mServer = server;
    connect(mServer, &QLocalServer::newConnection, this, &InstanceHandoff::acceptConnections);
    return Start::Primary;
}

void InstanceHandoff::acceptConnections()
{
    while (QLocalSocket* socket = mServer->nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readRequest(socket); });
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        // A sender that wrote and left before we got here: its request is already waiting.
        if (socket->bytesAvailable() > 0)
            readRequest(socket);
    }
}

void InstanceHandoff::readRequest(QLocalSocket* socket)
{
    QByteArray buffer = socket->property(kBufferProperty).toByteArray() + socket->readAll();
    QStringList files;
    switch (decode(buffer, files)) {
    case Decoded::Incomplete:
        socket->setProperty(kBufferProperty, buffer);
        return;
    case Decoded::Invalid:
        socket->abort();
        return;
    case Decoded::Complete:
        socket->setProperty(kBufferProperty, QByteArray());
        socket->write(kReceipt);
        socket->flush();
        socket->disconnectFromServer();
        emit filesReceived(files);
        return;
    }
}

} // namespace kilnova
