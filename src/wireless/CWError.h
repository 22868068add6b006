// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// What a failed platform action reports. Callers show localizedDescription() to the user;
// codes are kept for logs and tests only.
class CWError
{
public:
    CWError() = default;
    CWError(int code, QString description) : m_code(code), m_description(std::move(description))
    {
    }

    bool isNull() const { return m_code == 0 && m_description.isEmpty(); }
    int code() const { return m_code; }
    QString localizedDescription() const { return m_description; }

    void clear() { *this = CWError(); }

    // Fill an optional out-parameter; does nothing when the caller passed none.
    static void set(CWError *out, int code, const QString &description)
    {
        if (out)
            *out = CWError(code, description);
    }
    static void reset(CWError *out)
    {
        if (out)
            out->clear();
    }

private:
    int m_code = 0;
    QString m_description;
};

// Error codes shared by the backends (negative errno values are used as they are).
enum CWErrorCode : int {
    kCWErrorUnknown = 1,
    kCWErrorPoweredOff = 2,
    kCWErrorNotPermitted = 3,
    kCWErrorInvalidParameter = 4,
    kCWErrorBusy = 5,
    kCWErrorAuthenticationFailed = 6,
    kCWErrorTimeout = 7,
    kCWErrorServiceUnavailable = 8,
    kCWErrorNotSupported = 9,
    kCWErrorNoInterface = 10,
};
