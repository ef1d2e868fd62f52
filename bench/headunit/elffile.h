// What a library says of itself, read from its file without loading it.
#pragma once

#include <QByteArray>
#include <QStringList>

namespace bench {

/// The tables of an ELF file, for any machine of our byte order.
struct ElfFile
{
    enum Kind { Library, Program, Other };

    QString problem; ///< Why no more could be read; empty if all could.
    Kind kind = Other;
    int machine = 0; ///< EM_... of <elf.h>; 0 if it is no ELF file.
    int bits = 0;    ///< 32 or 64.

    QString name;         ///< Under which programs ask for it (SONAME); may be empty.
    QStringList needed;   ///< Names of the libraries that it asks for.
    QStringList versions; ///< Of each kind of symbol version the highest: GLIBC_2.34, Qt_5.15.
    QStringList exports;  ///< Symbols for others, weak ones aside, demangled and sorted.
    /// Symbols that some library must have and that no version ties to one: those of a host.
    /// Weak ones aside, demangled and sorted.
    QStringList imports;
    QByteArray metaData; ///< The section .qtmetadata; empty if there is none.
};

/// Every offset and size in the file is checked before it is used: it may hold anything.
ElfFile readElf(const QString &path);

} // namespace bench
