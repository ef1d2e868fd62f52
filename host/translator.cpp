#include "translator.h"

// The texts that the services use, shared with all who ask.
QString Translator::translate(int id)
{
    switch (id) {
    case 339:
        return QStringLiteral("V");
    case 989:
        return QStringLiteral("bar");
    case 990:
        return QStringLiteral("\u00B0C");
    case 992:
        return QStringLiteral("km/h");
    case 993:
        return QStringLiteral("\u00B0F");
    case 997:
        return QStringLiteral("km");
    case 1002:
        return QStringLiteral("L/100km");
    case 1006:
        return QStringLiteral("kPa");
    case 1007:
        return QStringLiteral("psi");
    }
    return {};
}
