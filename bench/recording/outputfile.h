// Files that commands write.
#pragma once

#include <QFileDevice>
#include <QStringList>

#include <memory>

namespace bench {

/// What is to be written, and what must not be lost by it.
struct OutputTarget
{
    QString name;       ///< `-` is the standard output.
    QStringList inputs; ///< What the command reads; `-` is the standard input.
    bool replace = false;
    QIODevice *standardOutput = nullptr; ///< None where it is in use for something else.
};

/// A file as the result of a command. It takes no name of what the command reads, by whatever path
/// or link, and that of an existing file only where it is to be replaced. Devices and pipes are
/// written as they are.
class OutputFile
{
public:
    enum Way {
        Whole, ///< The name is taken by commit(), so that there is all of the file or none of it.
        Live,  ///< The name is taken at once, and each write is in the file when it returns.
    };

    /// \returns an empty text, or what is wrong and what to do about it.
    QString open(const OutputTarget &target, Way way);

    /// Open for writing after open() was right.
    QIODevice &device() { return *mDevice; }
    /// \returns an empty text, or why \p bytes are not in the file.
    QString write(const QByteArray &bytes);
    /// The end of what is written. Without it, a whole file does not come into being.
    /// \returns an empty text, or what went wrong.
    QString commit();

private:
    QString problem() const;

    std::unique_ptr<QFileDevice> mFile; ///< None for the standard output.
    QIODevice *mDevice = nullptr;
    QString mName; ///< For messages.
    bool mIsNew = false;
};

} // namespace bench
