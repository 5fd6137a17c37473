#include "sample/sample_names.h"

namespace sample {

namespace {

const char *const keywords[] = {"Beach",  "Mountains", "Family",  "Birthday", "Café",   "日本",
                                "Sunset", "Garden",    "Concert", "Food",     "Snow",   "Train",
                                "Århus",  "Kraków",    "Wedding", "Night",    "Boat",   "Bicycle",
                                "Museum", "School",    "Cat",     "Dog",      "Straße", "Zoo"};

const char *const firstNames[] = {"Ann",  "Zoë",   "Jørgen", "Maria", "Tomás", "Wei",
                                  "Léa",  "Oskar", "Hanna",  "Ivan",  "Priya", "Samuel",
                                  "Yuki", "Noor",  "Paweł",  "Grace"};
const char *const lastNames[] = {"Berg",   "Nowak",  "Tanaka", "Ferreira", "Smith",
                                 "Dubois", "Müller", "Okafor", "Lindqvist"};

const char *const titles[] = {"The lighthouse",   "Zoë on the pier",  "First light", "夏の海",
                              "Market on Sunday", "Über den Dächern", "Low tide"};
const char *const captions[] = {
    "Just before the rain came down.", "We waited an hour for this – worth it.",
    "Grandmother's garden in June", "Two lines:\nthe second one is this.", "Żółta łódka"};

template <int size>
QString oneOf(const char *const (&words)[size], int index)
{
    return QString::fromUtf8(words[index % size]);
}

template <int size>
constexpr int countOf(const char *const (&)[size])
{
    return size;
}

QString numbered(const QString &name, int round)
{
    return round == 0 ? name : QStringLiteral("%1 %2").arg(name).arg(round + 1);
}

constexpr int namelessPerson = 3;
constexpr int junior = 7;
constexpr int senior = 2;

} // namespace

QString keywordTitle(int index)
{
    return numbered(oneOf(keywords, index), index / countOf(keywords));
}

QString personName(int index)
{
    if (index == namelessPerson)
        return QLatin1String("");
    const int person = index == junior ? senior : index;
    // Without a common divisor of both counts every pair comes once in a round.
    const int pairs = countOf(firstNames) * countOf(lastNames);
    const QString name = oneOf(firstNames, person) + QLatin1Char(' ') + oneOf(lastNames, person);
    return numbered(name, person / pairs);
}

QString photoTitle(int index)
{
    return oneOf(titles, index);
}

QString photoCaption(int index)
{
    return oneOf(captions, index);
}

} // namespace sample
