// Where programs come in that act on the bench while it runs.
#pragma once

#include "bench/commands/lineinput.h"
#include "bench/language/control.h"
#include "bench/screen/printer.h"

#include <memory>
#include <vector>

namespace bench {

/// A Unix socket, or standard input and output, for any number of conversations. A client that does
/// not read its answers is dropped.
class ControlChannel : public QObject
{
    Q_OBJECT

public:
    explicit ControlChannel(const Stage &stage, QObject *parent = nullptr);
    ~ControlChannel() override;

    /// Begins to listen at \p path with mode 0600; `-` is standard input and output. A socket there
    /// that nobody listens at any more is replaced, and nothing else; it is gone at the end.
    /// \returns an empty text, or what is wrong and what to do about it.
    QString open(const QString &path);
    /// Nobody comes in any more, and the socket is gone.
    void close();

    /// Whether anybody has asked for events.
    bool hasListeners() const;
    /// An event for those who have, with its line end.
    void publish(const QByteArray &json);

signals:
    /// A `say` step of a client's.
    void said(const QString &text);
    /// Standard input has ended, and everything in it is done.
    void ended();

private:
    struct Client;

    QString listenAt(const QByteArray &path);
    void onConnection();
    Client &add(int descriptor, int input);
    void send(Client &client, const QByteArray &bytes);
    void drop(Client &client);
    void sweep();

    const Stage mStage;
    int mDescriptor = -1;
    QByteArray mPath; ///< Of the socket; empty for none.
    quint64 mDevice = 0, mInode = 0;
    std::unique_ptr<QSocketNotifier> mNotifier;
    std::vector<std::unique_ptr<Client>> mClients;
};

/// What prints beside a channel at \p path: nothing, where the answers go to standard output.
/// \param sink gets what would go there beside any other channel.
Printer printerFor(const QString &path, Printer::Format format, Printer::Sink sink = {});

/// What a control channel's text is, for --help.
constexpr char kControlHelp[] =
    "Take steps from other programs at the Unix socket PATH, a line each, while this runs; - is "
    "standard input and output. See 'canbench send --help'.";

} // namespace bench
