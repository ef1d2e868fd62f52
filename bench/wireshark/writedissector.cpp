// Writes the packet analyser's dissector: the table of reports as Lua, and the logic behind it,
// which is the file that is named.
#include "bench/wire/reports.h"

#include <cstdio>
#include <fstream>
#include <iostream>

namespace bench {

namespace {

void writeWords(Span<Word> words)
{
    std::printf("{");
    for (const Word &word : words)
        std::printf("[%d] = \"%s\", ", word.raw, word.name);
    std::printf("}");
}

void writeField(const Field &field)
{
    std::printf("    {name = \"%s\", byte = %d, shift = %d, bits = %d, words = ", field.name,
                field.byte, field.shift, field.bits);
    writeWords(field.words);
    std::printf(",\n     unit = \"%s\", offset = %.17g, scale = %.17g, isChoice = %s", field.unit,
                field.offset, field.scale, field.low > field.high ? "true" : "false");
    if (field.selector >= 0)
        std::printf(", selector = 0x%02X", static_cast<unsigned>(field.selector));
    if (field.pair[0] >= 0)
        std::printf(", pair = {%d, %d}", field.pair[0], field.pair[1]);
    std::printf("},\n");
}

void writeTable()
{
    std::printf("local kHead, kReceiptGood, kReceiptBad = 0x%02X, 0x%02X, 0x%02X\n", canbox::kHead,
                canbox::kReceiptGood, canbox::kReceiptBad);
    std::printf("local kReports = {\n");
    for (const Report &report : kReports) {
        std::printf("  [0x%02X] = {name = \"%s\", size = %d, fields = {\n",
                    static_cast<unsigned>(report.type), report.name, report.size);
        for (const Field &field : report.fields)
            writeField(field);
        std::printf("  }},\n");
    }
    std::printf("}\nlocal kAnySize = %d\nlocal kCommands = {\n", kAnySize);
    for (const Command &command : kCommands)
        std::printf("  [0x%02X] = \"%s\",\n", static_cast<unsigned>(command.type), command.name);
    std::printf("}\n\n");
}

} // namespace

} // namespace bench

int main(int argc, char **argv)
{
    std::ifstream logic(argc == 2 ? argv[1] : "");
    if (!logic) {
        std::fprintf(stderr, "Name the file with the logic.\n");
        return 1;
    }
    std::printf("-- Generated from the bench's table of reports.\n");
    bench::writeTable();
    std::fflush(stdout);
    std::cout << logic.rdbuf() << std::flush;
    return std::cout && std::fflush(stdout) == 0 ? 0 : 1;
}
