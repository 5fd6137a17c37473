#ifndef PHOTOLIB_ENGINE_NAME_CHOICE_H
#define PHOTOLIB_ENGINE_NAME_CHOICE_H

#include <QByteArray>

#include <set>
#include <string>

/// `text` in a form in which names are the same that differ in upper and lower case only, or in the
/// way that accents are stored.
QByteArray caseBlind(const QByteArray &text);

/// Those of `names` that `text` names: the one that is written in just this way or, when there is
/// none, all that are so but for upper and lower case. Throws Error, "TEXT: `unknown`", with a
/// suggestion, when there are none either.
std::set<QByteArray> chosenNames(const std::set<QByteArray> &names, const std::string &text,
                                 const std::string &unknown);

#endif // PHOTOLIB_ENGINE_NAME_CHOICE_H
