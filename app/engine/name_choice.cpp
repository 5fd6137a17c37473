#include "engine/name_choice.h"

#include "base/error.h"
#include "base/suggestion.h"

#include <QString>

#include <algorithm>
#include <iterator>

QByteArray caseBlind(const QByteArray &text)
{
    return QString::fromUtf8(text.constData(), text.size())
        .normalized(QString::NormalizationForm_C)
        .toCaseFolded()
        .toUtf8();
}

std::set<QByteArray> chosenNames(const std::set<QByteArray> &names, const std::string &text,
                                 const std::string &unknown)
{
    const QByteArray name = QByteArray::fromStdString(text);
    if (names.count(name) != 0)
        return {name};
    const QByteArray blind = caseBlind(name);
    std::set<QByteArray> chosen;
    std::copy_if(names.begin(), names.end(), std::inserter(chosen, chosen.end()),
                 [&blind](const QByteArray &each) { return caseBlind(each) == blind; });
    if (!chosen.empty())
        return chosen;
    std::vector<std::string> texts;
    texts.reserve(names.size());
    for (const QByteArray &each : names)
        texts.push_back(each.toStdString());
    throw Error(text, unknown + suggestion(text, texts));
}
