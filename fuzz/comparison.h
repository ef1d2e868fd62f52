// A service and its oracle side by side. Whatever differs aborts, which the fuzzer takes for a
// find.
#pragma once

#include "servicemodel.h"
#include "tests/servicetest.h"

#include <fuzzer/FuzzedDataProvider.h>

/// Once per process, before the first service: an application for the timers, and no log output.
/// Debug lines are formatted while \p debug is on.
void prepareProcess(bool debug);

/// Any number, but often a model with two codes per radar sensor, with a palette of its own, or
/// both.
int randomCar(FuzzedDataProvider &data);

/// A well-formed frame: mostly of a type that has a handler, and of the handler's length.
QByteArray randomFrame(FuzzedDataProvider &data);

class Comparison
{
public:
    explicit Comparison(int carModel);

    /// A chunk from the line, to both.
    void receive(const QByteArray &chunk);
    /// A time-out of a timer, due or not.
    void fire(ServiceModel::Timer timer);
    /// One call of the host with arguments from \p data.
    void call(FuzzedDataProvider &data);
    /// Aborts unless both have written and signalled the same since the last call.
    void compareJournal();
    /// Aborts unless the getters, the timers and the parser are where the model has them.
    void compareState();

    ServiceTest test;
    ServiceModel model;

private:
    void callSettings(FuzzedDataProvider &data);
    void callMedia(FuzzedDataProvider &data);
    void callClimateKey(int key, int value);
};

[[noreturn]] void fail(const QStringList &got, const QStringList &expected);
