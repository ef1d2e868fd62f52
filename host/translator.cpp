#include "translator.h"

#include <algorithm>
#include <iterator>

namespace {

struct Text
{
    int id;
    const char *utf8;
};

// The texts that the services use, by id.
constexpr Text kTexts[] = {
    {339, "V"},  {989, "bar"},      {990, "\u00B0C"}, {992, "km/h"}, {993, "\u00B0F"},
    {997, "km"}, {1002, "L/100km"}, {1006, "kPa"},    {1007, "psi"},
};

} // namespace

QString Translator::translate(int id)
{
    const auto *text = std::find_if(std::begin(kTexts), std::end(kTexts),
                                    [id](const Text &row) { return row.id == id; });
    return text == std::end(kTexts) ? QString() : QString::fromUtf8(text->utf8);
}
