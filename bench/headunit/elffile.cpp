#include "bench/headunit/elffile.h"

#include <QFile>
#include <QMap>
#include <QVersionNumber>

#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <elf.h>
#include <memory>
#include <optional>

namespace bench {

namespace {

struct Elf32
{
    using Header = Elf32_Ehdr;
    using Program = Elf32_Phdr;
    using Section = Elf32_Shdr;
    using Dynamic = Elf32_Dyn;
    using Symbol = Elf32_Sym;
};

struct Elf64
{
    using Header = Elf64_Ehdr;
    using Program = Elf64_Phdr;
    using Section = Elf64_Shdr;
    using Dynamic = Elf64_Dyn;
    using Symbol = Elf64_Sym;
};

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
class Bytes
{
public:
    Bytes(const uchar *bytes, quint64 size)
        : mBytes(bytes)
        , mSize(size)
    {
    }

    quint64 size() const { return mSize; }
    bool has(quint64 offset, quint64 size) const
    {
        return offset <= mSize && size <= mSize - offset;
    }
    template <typename Type>
    std::optional<Type> at(quint64 offset) const
    {
        if (!has(offset, sizeof(Type)))
            return std::nullopt;
        Type value;
        std::memcpy(&value, mBytes + offset, sizeof value);
        return value;
    }
    QByteArray mid(quint64 offset, quint64 size) const
    {
        if (!has(offset, size) || size > kLongestSection)
            return {};
        return {reinterpret_cast<const char *>(mBytes + offset), static_cast<int>(size)};
    }

private:
    const uchar *mBytes;
    quint64 mSize;
};

template <typename Elf>
class Reader
{
public:
    Reader(const Bytes &bytes, ElfFile *file)
        : mBytes(bytes)
        , mFile(*file)
    {
    }

    void read()
    {
        const auto header = mBytes.at<typename Elf::Header>(0);
        if (!header)
            return cutShort(sizeof(typename Elf::Header));
        mHeader = *header;
        mFile.machine = mHeader.e_machine;
        if (mHeader.e_shnum == 0 || mHeader.e_shentsize != sizeof(Section) ||
            (mHeader.e_phnum != 0 && mHeader.e_phentsize != sizeof(typename Elf::Program)))
            return damaged("it has no table of sections, or none that can be read");
        if (!readPrograms() || !readSections())
            return;
        readDynamic();
        readVersions();
        readSymbols();
        mFile.metaData = content(".qtmetadata");
        mFile.kind = kind();
    }

private:
    using Section = typename Elf::Section;

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

    bool readPrograms()
    {
        for (int i = 0; i < mHeader.e_phnum; ++i) {
            const quint64 offset = mHeader.e_phoff + quint64(i) * sizeof(typename Elf::Program);
            const auto program = mBytes.at<typename Elf::Program>(offset);
            if (!program)
                cutShort(offset + sizeof(typename Elf::Program));
            else if (!mBytes.has(program->p_offset, program->p_filesz))
                cutShort(quint64(program->p_offset) + program->p_filesz);
            else
                mHasInterpreter = mHasInterpreter || program->p_type == PT_INTERP;
            if (!mFile.problem.isEmpty())
                return false;
        }
        return true;
    }

    bool readSections()
    {
        for (int i = 0; i < mHeader.e_shnum; ++i) {
            const quint64 offset = mHeader.e_shoff + quint64(i) * sizeof(Section);
            const auto section = mBytes.at<Section>(offset);
            if (!section)
                cutShort(offset + sizeof(Section));
            else if (section->sh_type != SHT_NOBITS &&
                     !mBytes.has(section->sh_offset, section->sh_size))
                cutShort(quint64(section->sh_offset) + section->sh_size);
            if (!mFile.problem.isEmpty())
                return false;
            mSections.append(*section);
        }
        return true;
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

    QByteArray content(const char *name) const
    {
        for (const Section &section : mSections)
            if (text(mHeader.e_shstrndx, section.sh_name) == name)
                return mBytes.mid(section.sh_offset, section.sh_size);
        return {};
    }

    void readDynamic()
    {
        using Dynamic = typename Elf::Dynamic;
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
        using Symbol = typename Elf::Symbol;
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

    ElfFile::Kind kind() const
    {
        // A library may have an interpreter, too, and programs before 2015 do not say what they
        // are.
        if (mHeader.e_type == ET_EXEC || mIsProgram ||
            (mHeader.e_type == ET_DYN && mHasInterpreter && mFile.name.isEmpty()))
            return ElfFile::Program;
        return mHeader.e_type == ET_DYN ? ElfFile::Library : ElfFile::Other;
    }

    const Bytes mBytes;
    ElfFile &mFile;
    typename Elf::Header mHeader{};
    QVector<Section> mSections;
    bool mHasInterpreter = false;
    bool mIsProgram = false;
};

} // namespace

ElfFile readElf(const QString &path)
{
    ElfFile result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.problem = QStringLiteral("it cannot be read: %1").arg(file.errorString());
        return result;
    }
    if (file.size() == 0) {
        result.problem = QStringLiteral("it is empty; copy it again");
        return result;
    }
    const uchar *content = file.map(0, file.size());
    if (!content) {
        result.problem = QStringLiteral("it cannot be read: %1").arg(file.errorString());
        return result;
    }
    const Bytes bytes(content, quint64(file.size()));
    const QByteArray identity = bytes.mid(0, std::min<quint64>(EI_NIDENT, bytes.size()));
    if (!identity.startsWith(ELFMAG)) {
        result.problem = identity.startsWith("!<arch>\n")
                             ? QStringLiteral("it is a static library; name a shared one (.so)")
                             : QStringLiteral("it is not a library (no ELF file)");
        return result;
    }
    if (identity.size() < EI_NIDENT) {
        result.problem = QStringLiteral("it is cut short within its first line; copy it again");
        return result;
    }
    if (identity.at(EI_DATA) != kOurByteOrder) {
        result.problem = QStringLiteral("it is built for a machine of the other byte order");
        return result;
    }
    result.bits = identity.at(EI_CLASS) == ELFCLASS64 ? 64 : 32;
    if (result.bits == 64)
        Reader<Elf64>(bytes, &result).read();
    else
        Reader<Elf32>(bytes, &result).read();
    return result;
}

} // namespace bench
