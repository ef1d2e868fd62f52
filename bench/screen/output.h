// Everything that goes to standard output and standard error.
#pragma once

#include "bench/screen/jsonline.h"
#include "bench/screen/printable.h"

#include <QIODevice>

#include <string_view>

namespace bench {

/// A standard stream with a buffer. The first write that fails is told on standard error; what
/// follows is dropped, and finish() turns it into an exit code. A reader that has gone is no
/// error: SIGPIPE is raised, which ends the program without a word or reaches its UnixSignals.
class Output
{
public:
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    /// A line, printable whatever \p text holds: a line feed does not make two of it.
    void line(const QString &text);
    /// Lines of our own making, each of them printable.
    void text(const QString &text);
    /// Bytes that are valid in their format, as of a JsonLine.
    void bytes(std::string_view bytes);
    void bytes(const QByteArray &bytes)
    {
        this->bytes(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    }

    /// Whoever follows a pipe live sees what there is. \returns false when output was lost.
    bool flush();
    bool isLost() const { return mError != 0; }

    /// The last call on it: flushes. \returns \p code, or if output was lost: 1 instead of 0, and
    /// 128 + SIGPIPE for a reader that has gone.
    int finish(int code);

private:
    friend Output &standardOutput();
    friend Output &standardError();
    explicit Output(int descriptor);

    void lose(int error);

    const int mDescriptor;
    QByteArray mBuffer;
    int mError = 0;
};

Output &standardOutput();
/// The same for what writes to a device.
QIODevice &standardOutputDevice();
/// Written line by line, after what is in the buffer of standard output.
Output &standardError();

/// To be called first in main(), before anything opens a file: a stream that was closed by whoever
/// started the program stays closed, instead of being the next file that is opened. Log messages go
/// to standard error, printable.
void prepareStandardStreams();
/// The exit code for \p code after the last output, which main() returns.
int finishStandardStreams(int code);

} // namespace bench
