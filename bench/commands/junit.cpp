#include "bench/commands/junit.h"

#include "bench/screen/printable.h"

#include <QXmlStreamWriter>

#include <algorithm>

namespace bench {

namespace {

QString timeText(double seconds) { return QString::number(seconds, 'f', 3); }

// What XML cannot hold is not printable either.
void attribute(QXmlStreamWriter &xml, const char *name, const QString &text)
{
    xml.writeAttribute(QLatin1String(name), printable(text));
}

void writeCounts(QXmlStreamWriter &xml, const QVector<ReportSuite> &suites)
{
    int tests = 0, failures = 0, errors = 0;
    double seconds = 0;
    for (const ReportSuite &suite : suites) {
        tests += suite.cases.size();
        failures += suite.count(ReportCase::Unmet);
        errors += suite.count(ReportCase::Broken);
        seconds += suite.seconds();
    }
    attribute(xml, "tests", QString::number(tests));
    attribute(xml, "failures", QString::number(failures));
    attribute(xml, "errors", QString::number(errors));
    attribute(xml, "time", timeText(seconds));
}

void writeProblem(QXmlStreamWriter &xml, const char *element, const ReportCase &part)
{
    xml.writeStartElement(QLatin1String(element));
    attribute(xml, "message", part.message);
    attribute(xml, "type", QLatin1String(element));
    xml.writeCharacters(printable(part.detail));
    xml.writeEndElement();
}

void writeCase(QXmlStreamWriter &xml, const ReportSuite &suite, const ReportCase &part)
{
    xml.writeStartElement(QStringLiteral("testcase"));
    attribute(xml, "name", part.name);
    attribute(xml, "classname", suite.name);
    attribute(xml, "assertions", QString::number(part.expectations));
    attribute(xml, "time", timeText(part.seconds));
    if (part.outcome == ReportCase::Unmet)
        writeProblem(xml, "failure", part);
    else if (part.outcome == ReportCase::Broken)
        writeProblem(xml, "error", part);
    else if (part.outcome == ReportCase::NotReached)
        xml.writeEmptyElement(QStringLiteral("skipped"));
    xml.writeEndElement();
}

} // namespace

int ReportSuite::count(ReportCase::Outcome outcome) const
{
    return static_cast<int>(
        std::count_if(cases.begin(), cases.end(),
                      [outcome](const ReportCase &part) { return part.outcome == outcome; }));
}

double ReportSuite::seconds() const
{
    double sum = 0;
    for (const ReportCase &part : cases)
        sum += part.seconds;
    return sum;
}

QByteArray junitReport(const QVector<ReportSuite> &suites)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuites"));
    attribute(xml, "name", QStringLiteral("canbench"));
    writeCounts(xml, suites);
    for (const ReportSuite &suite : suites) {
        xml.writeStartElement(QStringLiteral("testsuite"));
        attribute(xml, "name", suite.name);
        writeCounts(xml, {suite});
        attribute(xml, "skipped", QString::number(suite.count(ReportCase::NotReached)));
        for (const ReportCase &part : suite.cases)
            writeCase(xml, suite, part);
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return bytes;
}

} // namespace bench
