#include "bench/headunit/elffile.h"

#include <QFile>
#include <QMap>
#include <QVersionNumber>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <elf.h>
#include <memory>
#include <optional>
#include <string_view>

namespace bench {

namespace {

constexpr auto kOurByteOrder = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? ELFDATA2LSB : ELFDATA2MSB;
constexpr quint64 kLongestText = 4096;
constexpr quint64 kLongestSection = 1 << 20; // Of those that are read whole.
constexpr Elf64_Half kVersionMask = 0x7FFF;  // The highest bit hides a symbol.

QString demangled(const QByteArray &name)
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void *)> text(
        abi::__cxa_demangle(name.constData(), nullptr, nullptr, &status), std::free);
    return QString::fromLatin1(status == 0 ? QByteArray(text.get()) : name);
}

// `GLIBC` and `2.34`; a name without a number has no rank.
QVersionNumber rank(const QString &version)
{
    return QVersionNumber::fromString(version.mid(version.lastIndexOf(QLatin1Char('_')) + 1));
}

// The bytes of a file; whatever is asked for beyond them is not there.
class Bytes : public std::string_view
{
public:
    using std::string_view::string_view;

    bool has(quint64 offset, quint64 count) const
    {
        return offset <= size() && count <= size() - offset;
    }
    template <typename Type>
    std::optional<Type> at(quint64 offset) const
    {
        if (!has(offset, sizeof(Type)))
            return std::nullopt;
        Type value;
        std::memcpy(&value, data() + offset, sizeof value);
        return value;
    }
    QByteArray mid(quint64 offset, quint64 count) const
    {
        if (!has(offset, count) || count > kLongestSection)
            return {};
        return {data() + offset, static_cast<int>(count)};
    }
};

/// By the structures of one of the two sizes.
template <typename Header, typename Program, typename Section, typename Dynamic, typename Symbol>
class ElfReader
{
public:
    ElfReader(const Bytes &bytes, ElfFile *file)
        : mBytes(bytes)
        , mFile(*file)
    {
    }

    void read()
    {
        const auto header = mBytes.at<Header>(0);
        if (!header)
            return cutShort(sizeof(Header));
        mFile.machine = header->e_machine;
        if (header->e_shnum == 0 || header->e_shentsize != sizeof(Section) ||
            (header->e_phnum != 0 && header->e_phentsize != sizeof(Program)))
            return damaged("it has no table of sections, or none that can be read");
        const auto programs =
            table<Program>(header->e_phoff, header->e_phnum, [](const Program &program) {
                return Extent{program.p_offset, program.p_filesz};
            });
        mSections = table<Section>(header->e_shoff, header->e_shnum, [](const Section &section) {
            return Extent{section.sh_offset, section.sh_type == SHT_NOBITS ? 0 : section.sh_size};
        });
        if (!mFile.problem.isEmpty())
            return;
        readDynamic();
        readVersions();
        readSymbols();
        for (const Section &section : mSections)
            if (text(header->e_shstrndx, section.sh_name) == ".qtmetadata")
                mFile.metaData = mBytes.mid(section.sh_offset, section.sh_size);
        // A library may have an interpreter, too, and programs before 2015 do not say what they
        // are.
        const bool isLoaded = header->e_type == ET_DYN;
        const bool hasInterpreter =
            std::any_of(programs.begin(), programs.end(),
                        [](const Program &program) { return program.p_type == PT_INTERP; });
        if (header->e_type == ET_EXEC || mIsProgram ||
            (isLoaded && hasInterpreter && mFile.name.isEmpty()))
            mFile.kind = ElfFile::Program;
        else if (isLoaded)
            mFile.kind = ElfFile::Library;
    }

private:
    struct Extent
    {
        quint64 offset, size;
    };

    void cutShort(quint64 end)
    {
        mFile.problem = QStringLiteral("it is cut short: it has %1 bytes, and its tables tell of "
                                       "%2; copy it again")
                            .arg(mBytes.size())
                            .arg(end);
    }

    void damaged(const char *what)
    {
        mFile.problem = QStringLiteral("it is damaged: %1; copy it again").arg(QLatin1String(what));
    }

    // What each entry tells of must be in the file, too, or all of the file is not there.
    template <typename Entry, typename ExtentOf>
    QVector<Entry> table(quint64 offset, int count, ExtentOf extentOf)
    {
        QVector<Entry> entries;
        for (; entries.size() < count && mFile.problem.isEmpty(); offset += sizeof(Entry)) {
            const auto entry = mBytes.at<Entry>(offset);
            const Extent extent = entry ? extentOf(*entry) : Extent{offset, sizeof(Entry)};
            if (mBytes.has(extent.offset, extent.size))
                entries.append(*entry);
            else
                cutShort(extent.offset + extent.size);
        }
        return entries;
    }

    const Section *find(quint32 type) const
    {
        for (const Section &section : mSections)
            if (section.sh_type == type)
                return &section;
        return nullptr;
    }

    // Zero-terminated, from the table of texts with that index.
    QByteArray text(quint32 table, quint64 at) const
    {
        if (table >= quint32(mSections.size()) || at >= mSections.at(int(table)).sh_size)
            return {};
        const Section &section = mSections.at(int(table));
        const quint64 most = section.sh_size - at;
        const QByteArray bytes = mBytes.mid(section.sh_offset + at, std::min(most, kLongestText));
        return bytes.left(bytes.indexOf('\0'));
    }

    void readDynamic()
    {
        const Section *section = find(SHT_DYNAMIC);
        for (quint64 at = 0; section && at + sizeof(Dynamic) <= section->sh_size;
             at += sizeof(Dynamic)) {
            const auto entry = *mBytes.at<Dynamic>(section->sh_offset + at);
            const quint64 value = entry.d_un.d_val;
            if (entry.d_tag == DT_NULL)
                return;
            if (entry.d_tag == DT_NEEDED)
                mFile.needed += QString::fromUtf8(text(section->sh_link, value));
            else if (entry.d_tag == DT_SONAME)
                mFile.name = QString::fromUtf8(text(section->sh_link, value));
            else if (entry.d_tag == DT_FLAGS_1)
                mIsProgram = (value & DF_1_PIE) != 0;
        }
    }

    // A list of libraries, each with a list of versions; each entry tells where the next one is.
    void readVersions()
    {
        const Section *section = find(SHT_GNU_verneed);
        QMap<QString, QString> highest; // By what is before the number.
        quint64 at = section ? section->sh_offset : 0;
        quint64 room = section ? section->sh_size / sizeof(Elf64_Vernaux) : 0; // Or it is a loop.
        for (quint64 i = 0; section && i < section->sh_info; ++i) {
            const auto library = mBytes.at<Elf64_Verneed>(at); // The same for both sizes.
            if (!library || room-- == 0)
                return damaged("its table of symbol versions leads astray");
            quint64 auxiliary = at + library->vn_aux;
            for (int j = 0; j < library->vn_cnt; ++j) {
                const auto version = mBytes.at<Elf64_Vernaux>(auxiliary);
                if (!version || room-- == 0)
                    return damaged("its table of symbol versions leads astray");
                const QString name = QString::fromUtf8(text(section->sh_link, version->vna_name));
                QString &best = highest[name.left(name.lastIndexOf(QLatin1Char('_')))];
                if (best.isEmpty() || rank(best) < rank(name))
                    best = name;
                auxiliary += version->vna_next;
                if (version->vna_next == 0)
                    break;
            }
            at += library->vn_next;
            if (library->vn_next == 0)
                break;
        }
        mFile.versions = highest.values();
    }

    void readSymbols()
    {
        const Section *symbols = find(SHT_DYNSYM);
        const Section *versions = find(SHT_GNU_versym);
        for (quint64 i = 1; symbols && (i + 1) * sizeof(Symbol) <= symbols->sh_size; ++i) {
            const auto symbol = *mBytes.at<Symbol>(symbols->sh_offset + i * sizeof(Symbol));
            if (ELF64_ST_BIND(symbol.st_info) != STB_GLOBAL) // The same for both sizes.
                continue;
            const auto version =
                versions ? mBytes.at<Elf64_Half>(versions->sh_offset + i * sizeof(Elf64_Half))
                         : std::nullopt;
            const bool isUndefined = symbol.st_shndx == SHN_UNDEF;
            if (isUndefined && (version.value_or(0) & kVersionMask) > VER_NDX_GLOBAL)
                continue;
            (isUndefined ? mFile.imports : mFile.exports)
                .append(demangled(text(symbols->sh_link, symbol.st_name)));
        }
        mFile.imports.sort();
        mFile.exports.sort();
    }

    const Bytes mBytes;
    ElfFile &mFile;
    QVector<Section> mSections;
    bool mIsProgram = false;
};

} // namespace

ElfFile readElf(const QString &path)
{
    ElfFile result;
    const auto fail = [&result](const QString &problem) {
        result.problem = problem;
        return result;
    };
    QFile file(path);
    const bool isOpen = file.open(QIODevice::ReadOnly);
    if (isOpen && file.size() == 0)
        return fail(QStringLiteral("it is empty; copy it again"));
    const uchar *content = isOpen ? file.map(0, file.size()) : nullptr;
    if (!content)
        return fail(QStringLiteral("it cannot be read: %1").arg(file.errorString()));

    const Bytes bytes(reinterpret_cast<const char *>(content), std::size_t(file.size()));
    const QByteArray identity = bytes.mid(0, std::min<quint64>(EI_NIDENT, bytes.size()));
    if (identity.startsWith("!<arch>\n"))
        return fail(QStringLiteral("it is a static library; name a shared one (.so)"));
    if (!identity.startsWith(ELFMAG))
        return fail(QStringLiteral("it is not a library (no ELF file)"));
    if (identity.size() < EI_NIDENT)
        return fail(QStringLiteral("it is cut short within its first line; copy it again"));
    if (identity.at(EI_DATA) != kOurByteOrder)
        return fail(QStringLiteral("it is built for a machine of the other byte order"));
    result.bits = identity.at(EI_CLASS) == ELFCLASS64 ? 64 : 32;
    if (result.bits == 64)
        ElfReader<Elf64_Ehdr, Elf64_Phdr, Elf64_Shdr, Elf64_Dyn, Elf64_Sym>(bytes, &result).read();
    else
        ElfReader<Elf32_Ehdr, Elf32_Phdr, Elf32_Shdr, Elf32_Dyn, Elf32_Sym>(bytes, &result).read();
    return result;
}

} // namespace bench
