#ifndef PHOTOLIB_SAMPLE_OUTING_SLOTS_H
#define PHOTOLIB_SAMPLE_OUTING_SLOTS_H

namespace sample {

/// What the twenty assets of an outing are.
enum Slot {
    FirstView = 0,
    Portrait = 1,
    Film = 2,
    EditedLater = 3,
    BurstFirst = 4,
    BurstLast = 6,
    UpsideDown = 7,
    Panorama = 8,
    ImportFirst = 9, // three photos that came in one import, all in the same second
    ImportSecond = 10,
    ImportLast = 11,
    SecondFilm = 12,
    Screenshot = 13,
    ThrownAway = 14,
    SyncedPhoto = 15,
    ReceivedPhoto = 16,
    LeftOut = 17, // for its saved type, readers leave it out
    LivePhoto = 18,
    SizeUnknown = 19,
};

constexpr int outingSize = 20;

constexpr bool isBurst(int slot)
{
    return slot >= BurstFirst && slot <= BurstLast;
}
constexpr bool isImport(int slot)
{
    return slot >= ImportFirst && slot <= ImportLast;
}

} // namespace sample

#endif // PHOTOLIB_SAMPLE_OUTING_SLOTS_H
