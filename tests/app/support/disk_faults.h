#ifndef PHOTOLIB_TESTS_APP_DISK_FAULTS_H
#define PHOTOLIB_TESTS_APP_DISK_FAULTS_H

/// While one lives, no disk lets the times of its files be set.
class LackOfTimes
{
public:
    LackOfTimes();
    ~LackOfTimes();

    LackOfTimes(const LackOfTimes &) = delete;
    LackOfTimes &operator=(const LackOfTimes &) = delete;
};

/// While one lives, every disk lacks what memory cards and some network disks lack: names cannot be
/// given by a rename that replaces nothing, nor by a link, and no link can be made that says a
/// path.
class LackOfLinks
{
public:
    LackOfLinks();
    ~LackOfLinks();

    LackOfLinks(const LackOfLinks &) = delete;
    LackOfLinks &operator=(const LackOfLinks &) = delete;
};

/// While one lives, no file can be renamed: each disk fails with an input/output error.
class LackOfRenames
{
public:
    LackOfRenames();
    ~LackOfRenames();

    LackOfRenames(const LackOfRenames &) = delete;
    LackOfRenames &operator=(const LackOfRenames &) = delete;
};

/// Makes every disk lack the same for the process and the programs that it starts, and also files
/// without a name, for good. False when the system does not let it. Of the functions of the system
/// it calls only those that a process may call that was forked.
bool takeLinksAway();

/// Makes every disk lack locks in the same way.
bool takeLocksAway();

#endif // PHOTOLIB_TESTS_APP_DISK_FAULTS_H
