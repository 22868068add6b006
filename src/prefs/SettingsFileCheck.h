// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Looks at a settings file before QSettings reads it. QSettings turns every "@Variant(...)"
// value into a QVariant through QDataStream, which trusts the element counts it finds there:
// a damaged or hostile file can make it reserve gigabytes, or nest lists until the stack
// runs out, and the program dies before it can say why. Our own files only ever hold a
// dictionary of texts there, so anything QDataStream could choke on is taken out first.
//
// A line whose variant does not read back within its own bytes (counts larger than what
// follows, types we never store, nesting deeper than a few levels) is removed from the file;
// the original file is kept beside it as "<file>.damaged", so nothing the user had is lost.
class SettingsFileCheck
{
public:
    // Checks and, if needed, repairs the file at path. Returns one message per line taken
    // out (empty when the file was fine, missing or unreadable). A file that cannot be
    // repaired is left as it is and reported.
    static QStringList repair(const QString &path);

    // Whether one raw INI value (as it stands in the file, escaped) is safe to hand to
    // QSettings.
    static bool isSafeValue(const QByteArray &rawValue);

    // Whether a QDataStream (version 4.0) encoded QVariant reads back within its bytes.
    static bool isSafeVariant(const QByteArray &payload);
};
