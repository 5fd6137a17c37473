#ifndef PHOTOLIB_DEVICES_ENCODED_NAMES_H
#define PHOTOLIB_DEVICES_ENCODED_NAMES_H

#include "devices/device_file_system.h"

// The plug-in reads the names in a device's database as Latin-1 and passes them on as
// UTF-8, so that each byte of a name beyond ASCII arrives as two. The true name is what
// the database's bytes say. Names that the plug-in has from elsewhere arrive as they are,
// and nothing tells the two apart: a file is looked for under the name as given, and,
// when there is none, under the name with the second encoding undone.

/// `name` with a UTF-8 encoding of Latin-1 undone; empty when there is none to undo.
QByteArray undoneEncoding(const QByteArray &name);

/// DeviceFileSystem::open with both names. On failure `*error` is that of `path` as given,
/// unless there is a file of the other name that cannot be read.
std::unique_ptr<DeviceFile> openDeviceFile(DeviceFileSystem &files, const QByteArray &path,
                                           FileError *error);

/// DeviceFileSystem::info with both names. On failure `*error` is that of `path` as given,
/// unless there is a file of the other name that cannot be read.
bool deviceFileInfo(DeviceFileSystem &files, const QByteArray &path, FileInfo *info,
                    FileError *error);

#endif // PHOTOLIB_DEVICES_ENCODED_NAMES_H
