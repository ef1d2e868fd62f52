// A recording as a page of plots, with what the plug-in made of it.
#pragma once

#include "bench/recording/trace.h"

#include <QIODevice>

#include <optional>

namespace bench {

struct HtmlOptions
{
    QString title;
    QString plugin;              ///< Empty: the plug-in of this build.
    std::optional<int> carModel; ///< None: the recording's, or 1.
};

/// Takes the recording through the plug-in and writes the page. A recording that is damaged is
/// plotted up to the damage, which the page tells.
/// \returns an empty text, or why there is no page.
QString exportHtml(TraceReader &trace, QIODevice &out, const HtmlOptions &options);

} // namespace bench
