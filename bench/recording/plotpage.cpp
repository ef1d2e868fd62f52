#include "bench/recording/plotpage.h"

#include "bench/wire/reports.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

static void openResources() { Q_INIT_RESOURCE(page); } // A library's are not there by themselves.

namespace bench {

namespace {

// A good frame within this time after a bad one of its type is that one sent again.
constexpr qint64 kResendTime = 1'000'000; // us

constexpr struct
{
    const char *name, *kind;
} kMarkRows[] = {
    {"expectation not met", "fault"}, {"bad checksum", "fault"},
    {"frame given up", "fault"},      {"noise", "fault"},
    {"bad receipt", "fault"},         {"link lost", "fault"},
    {"sent again", "repair"},
};

QString bytesText(const QByteArray &bytes)
{
    constexpr int kMost = 24;
    const QString text = QString::fromLatin1(bytes.left(kMost).toHex(' ').toUpper());
    return bytes.size() > kMost ? text + QStringLiteral(" \u2026") : text;
}

int intAt(const QVector<Value> &arguments, int index)
{
    return static_cast<int>(numberOf(arguments.value(index)));
}

QString frameText(bool fromBox, const LineItem &item)
{
    return QStringLiteral("%1 %2 %3")
        .arg(hexByte(item.dataType), frameName(fromBox, item.dataType), bytesText(item.bytes));
}

// Times are written as the difference to the one before, which is shorter.
class Differences
{
public:
    void append(qint64 time)
    {
        mArray.append(time - mBefore);
        mBefore = time;
    }
    const QJsonArray &array() const { return mArray; }

private:
    QJsonArray mArray;
    qint64 mBefore = 0;
};

QJsonObject seriesJson(const QString &name, const QString &unit, const char *kind,
                       const Series &series)
{
    Differences times;
    QJsonArray numbers;
    for (const Series::Point &point : series.points()) {
        times.append(point.time);
        numbers.append(std::isnan(point.number) ? QJsonValue(point.word)
                                                : QJsonValue(point.number));
    }
    return {{"name", name},
            {"unit", unit},
            {"kind", kind},
            {"width", series.width()},
            {"changes", series.changes() - 1}, // The first is no change.
            {"t", times.array()},
            {"v", numbers}};
}

QJsonObject marksJson(const QString &name, const char *kind, const Marks &marks)
{
    Differences times;
    QJsonArray durations, counts, texts;
    for (const Marks::Mark &mark : marks.marks()) {
        times.append(mark.first);
        durations.append(mark.last - mark.first);
        counts.append(mark.count);
        texts.append(mark.text);
    }
    QJsonObject object{{"name", name},           {"kind", kind},       {"width", marks.width()},
                       {"count", marks.count()}, {"t", times.array()}, {"text", texts}};
    if (marks.width() > 0) {
        object.insert("d", durations);
        object.insert("n", counts);
    }
    return object;
}

// Both directions in stretches of one width.
QJsonObject trafficJson(Traffic fromBox, Traffic toBox)
{
    while (fromBox.seconds() < toBox.seconds())
        fromBox.widen();
    while (toBox.seconds() < fromBox.seconds())
        toBox.widen();
    QJsonObject object{{"width", fromBox.seconds() * 1'000'000}};
    const auto insert = [&object](const char *name, const Traffic &traffic) {
        QJsonArray means, peaks;
        for (const Traffic::Stretch &stretch : traffic.stretches()) {
            means.append(static_cast<double>(stretch.bytes) /
                         static_cast<double>(traffic.seconds()));
            peaks.append(stretch.busiest);
        }
        object.insert(QLatin1String(name), means);
        object.insert(QLatin1String(name) + QStringLiteral("Peak"), peaks);
    };
    insert("box", fromBox);
    insert("host", toBox);
    return object;
}

// Text from a recording stands in JSON alone, where these bytes occur in texts only: no text can
// end the element that holds it.
QByteArray escaped(QByteArray json)
{
    return json.replace('&', "\\u0026").replace('<', "\\u003c").replace('>', "\\u003e");
}

QByteArray resource(const QByteArray &name)
{
    QFile file(QStringLiteral(":/plots/") + QString::fromLatin1(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// `'sha256-...'`, by which a browser allows a script or a style.
QByteArray allowed(const QByteArray &text)
{
    return "'sha256-" + QCryptographicHash::hash(text, QCryptographicHash::Sha256).toBase64() + "'";
}

// Puts the files that the page names into it, and a policy that allows these and nothing else.
QByteArray joinedPage()
{
    QByteArray page = resource("page.html");
    QByteArray scripts, styles;
    const auto join = [&page](const QByteArray &before, const QByteArray &after,
                              const QByteArray &element, QByteArray *hashes) {
        for (int at = page.indexOf(before); at >= 0; at = page.indexOf(before, at)) {
            const int nameAt = at + before.size();
            const int nameEnd = page.indexOf('"', nameAt);
            const QByteArray text = resource(page.mid(nameAt, nameEnd - nameAt));
            page.replace(at, nameEnd + after.size() - at,
                         '<' + element + '>' + text + "</" + element + '>');
            *hashes += ' ' + allowed(text);
        }
    };
    join("<link rel=\"stylesheet\" href=\"", "\">", "style", &styles);
    join("<script src=\"", "\"></script>", "script", &scripts);
    const QByteArray charset = "<meta charset=\"utf-8\">\n";
    return page.replace(charset, charset +
                                     "<meta http-equiv=\"Content-Security-Policy\" content=\""
                                     "default-src 'none'; base-uri 'none'; form-action 'none'; "
                                     "style-src" +
                                     styles + "; script-src" + scripts + "\">\n");
}

} // namespace

void PlotPage::chunk(qint64 time, const QByteArray &port, bool fromBox, int bytes)
{
    constexpr int kMostPorts = 16;
    time = reach(time);
    if (!mPorts.contains(port) && mPorts.size() < kMostPorts)
        mPorts.append(port);
    (fromBox ? mFromBox : mToBox).add(time, bytes);
}

void PlotPage::item(qint64 time, bool fromBox, const LineItem &item)
{
    time = reach(time);
    switch (item.kind) {
    case LineItem::Frame:
    case LineItem::BadChecksum:
        countFrame(time, fromBox, item);
        break;
    case LineItem::Incomplete:
        mark(GivenUp, time, bytesText(item.bytes));
        break;
    case LineItem::BadReceipt:
        mark(BadReceipt, time, {});
        break;
    case LineItem::Noise:
        mark(Noise, time, bytesText(item.bytes));
        break;
    case LineItem::GoodReceipt:
        break;
    }
}

void PlotPage::countFrame(qint64 time, bool fromBox, const LineItem &item)
{
    FrameCount &count = mFrames[{!fromBox, item.dataType}];
    if (item.kind == LineItem::BadChecksum) {
        ++count.bad;
        if (fromBox)
            mDamaged.insert(item.dataType, time);
        mark(BadChecksum, time,
             QStringLiteral("%1, %2 instead of %3")
                 .arg(frameText(fromBox, item), hexByte(item.received), hexByte(item.expected)));
        return;
    }
    if (count.good++ == 0)
        count.first = time;
    else if (time - count.last > count.gap) {
        count.gap = time - count.last;
        count.gapAt = count.last;
    }
    count.last = time;
    if (!fromBox)
        return;
    const auto damaged = mDamaged.find(item.dataType);
    if (damaged == mDamaged.end())
        return;
    if (time - *damaged <= kResendTime)
        mark(Resent, time, frameText(fromBox, item));
    mDamaged.erase(damaged);
}

void PlotPage::signal(qint64 time, const QString &name, const QVector<Value> &arguments)
{
    time = reach(time);
    if (name == QLatin1String("notifyCanbusStatus")) {
        link(time, intAt(arguments, 0)); // Comes with each frame: no mark.
        return;
    }
    if (name == QLatin1String("keyEvent"))
        key(time, intAt(arguments, 0), intAt(arguments, 1));
    mSignals[name].add(time, plainText(arguments));
}

void PlotPage::say(qint64 time, const QString &text)
{
    const int index = plot(QStringLiteral("scenario"), {}, "scenario");
    mPlots[index].series.add({reach(time), std::nan(""), text});
}

void PlotPage::unmet(qint64 time, const QString &text) { mark(Unmet, reach(time), text); }

// Code 3: the box answers; 0: it is lost.
void PlotPage::link(qint64 time, int code)
{
    Series &series = mPlots[plot(QStringLiteral("link"), {}, "link")].series;
    const double isUp = code != 0 ? 1 : 0;
    if (!series.points().isEmpty() && series.points().last().number == isUp)
        return;
    series.add({time, isUp, {}});
    if (isUp == 0)
        mark(LinkLost, time, {});
}

// States: 0 pressed, 2 held long, 1 and 3 released. Drawn as 1, 2 and 0.
void PlotPage::key(qint64 time, int key, int state)
{
    const double held = state == 0 ? 1 : state == 2 ? 2 : 0;
    const int index = plot(QStringLiteral("key %1").arg(key), {}, "key");
    mPlots[index].series.add({time, held, {}});
}

void PlotPage::value(qint64 time, const QString &name, const PlotValue &value)
{
    constexpr const char *kKinds[] = {"switch", "number", "text"};
    const double none = std::nan("");
    const bool hasNumber = value.kind != PlotValue::Text && !std::isnan(value.number);
    time = reach(time);
    const int present = mPresent.value(name, -1);
    int now = present;
    if (present >= 0 && !mPlots.at(present).hasNumber && value.kind == PlotValue::Number)
        mPlots[present].unit = value.unit;
    else if (present < 0 || (hasNumber && mPlots.at(present).unit != value.unit))
        now = plot(name, value.unit, kKinds[value.kind]);
    if (present >= 0 && now != present)
        mPlots[present].series.add({time, none, QStringLiteral("in ") + value.unit});
    mPresent.insert(name, now);
    mPlots[now].hasNumber |= hasNumber;
    if (value.kind == PlotValue::Switch)
        mPlots[now].words[value.number > 0 ? 1 : 0] = value.word;
    mPlots[now].series.add({time, hasNumber ? value.number : none, value.word});
}

// A name that is there with another unit gets the unit behind it.
int PlotPage::plot(const QString &name, const QString &unit, const char *kind)
{
    for (int index = 0; index < mPlots.size(); ++index)
        if (mPlots.at(index).unit == unit && mPlots.at(index).value == name)
            return index;
    const bool isOther = mPresent.contains(name);
    Plot plot;
    plot.name = isOther ? name + QStringLiteral(" in ") + unit : name;
    plot.value = name;
    plot.unit = unit;
    plot.kind = kind;
    mPlots.append(plot);
    return mPlots.size() - 1;
}

qint64 PlotPage::reach(qint64 time)
{
    mSpan = qMax(mSpan, time);
    return mSpan;
}

void PlotPage::mark(MarkKind kind, qint64 time, const QString &text)
{
    mMarks[kind].add(time, text);
}

QJsonArray PlotPage::totals() const
{
    const auto entry = [](const char *name, qint64 count, bool isBad) {
        return QJsonArray{QLatin1String(name), count, isBad};
    };
    qint64 fromBox = 0, toBox = 0;
    for (auto it = mFrames.cbegin(); it != mFrames.cend(); ++it)
        (it.key().first ? toBox : fromBox) += it->good;
    QJsonArray array{entry("frames from the box", fromBox, false),
                     entry("frames to the box", toBox, false)};
    for (int kind = 0; kind < kMarkKinds; ++kind)
        if (mMarks[kind].count() > 0 || kind == BadChecksum || kind == LinkLost)
            array.append(entry(kMarkRows[kind].name, mMarks[kind].count(),
                               qstrcmp(kMarkRows[kind].kind, "fault") == 0));
    return array;
}

QJsonArray PlotPage::marks() const
{
    QJsonArray array;
    for (int kind = 0; kind < kMarkKinds; ++kind)
        if (mMarks[kind].count() > 0)
            array.append(
                marksJson(QLatin1String(kMarkRows[kind].name), kMarkRows[kind].kind, mMarks[kind]));
    for (auto it = mSignals.cbegin(); it != mSignals.cend(); ++it)
        array.append(marksJson(it.key(), "event", *it));
    return array;
}

QJsonArray PlotPage::frames() const
{
    QJsonArray array;
    for (auto it = mFrames.cbegin(); it != mFrames.cend(); ++it) {
        const auto [isToBox, dataType] = it.key();
        array.append(QJsonObject{
            {"from", isToBox ? "host" : "box"},
            {"type", hexByte(dataType)},
            {"name", frameName(!isToBox, dataType)},
            {"count", it->good},
            {"bad", it->bad},
            {"first", it->first},
            {"last", it->last},
            {"gap", it->gap},
            {"gapAt", it->gapAt},
        });
    }
    return array;
}

QJsonObject PlotPage::json() const
{
    QJsonArray ports, series;
    for (const QByteArray &port : mPorts)
        ports.append(QString::fromLatin1(port));
    for (const Plot &plot : mPlots) {
        QJsonObject object = seriesJson(plot.name, plot.unit, plot.kind, plot.series);
        object.insert("words", QJsonArray{plot.words[0], plot.words[1]});
        series.append(object);
    }
    return {{"title", mAbout.title}, {"model", mAbout.carModel},
            {"start", mAbout.start}, {"span", mSpan},
            {"problem", mProblem},   {"ports", ports},
            {"totals", totals()},    {"series", series},
            {"marks", marks()},      {"traffic", trafficJson(mFromBox, mToBox)},
            {"frames", frames()}};
}

QString PlotPage::write(QIODevice &out) const
{
    openResources();
    const QByteArray place = "id=\"recording\">";
    QByteArray page = joinedPage();
    page.insert(page.indexOf(place) + place.size(),
                escaped(QJsonDocument(json()).toJson(QJsonDocument::Compact)));
    return out.write(page) == page.size() ? QString() : out.errorString();
}

} // namespace bench
