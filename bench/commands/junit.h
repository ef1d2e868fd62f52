// Reports for build servers.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

namespace bench {

/// A part of a scenario, from one `say` to the next.
struct ReportCase
{
    enum Outcome { Passed, Unmet, Broken, NotReached };

    QString name;
    double seconds = 0;
    int expectations = 0; ///< That were met.
    Outcome outcome = Passed;
    QString message; ///< Of what is not passed: the whole,
    QString detail;  ///< and its place and values.
};

/// A scenario.
struct ReportSuite
{
    QString name;
    QVector<ReportCase> cases;

    int count(ReportCase::Outcome outcome) const;
    double seconds() const;
};

/// The document in the format that JUnit has made usual.
QByteArray junitReport(const QVector<ReportSuite> &suites);

} // namespace bench
