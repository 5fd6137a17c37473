#ifndef PHOTOLIB_TESTS_APP_LIBRARY_EXPECTATION_H
#define PHOTOLIB_TESTS_APP_LIBRARY_EXPECTATION_H

#include <QByteArray>

/// Fails the test unless `dump`, the program's output for the device in the folder
/// `device`, says what plain SQL says about the device's database and what the folder
/// holds. The database is read from a copy.
void expectDumpOfDevice(const QByteArray &device, const QByteArray &dump);

#endif // PHOTOLIB_TESTS_APP_LIBRARY_EXPECTATION_H
