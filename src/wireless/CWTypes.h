// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The numbers crossing the wireless boundary. Their values are part of the contract with
// every backend and with the texts derived from them, so never renumber them.

enum CWOpMode : int {
    kCWOpModeStation = 0, // "Infrastructure"
    kCWOpModeIBSS = 1,
    kCWOpModeHostAP = 2,
    kCWOpModeMonitorMode = 3,
};

enum CWPHYMode : int {
    kCWPHYModeNone = 0,
    kCWPHYMode11a = 1,
    kCWPHYMode11b = 2,
    kCWPHYMode11g = 3,
    kCWPHYMode11n = 4,
};

// Argument of supportsSecurity().
enum CWSecurity : int {
    kCWSecurityNone = 0,
    kCWSecurityWEP = 1,
    kCWSecurityWPAPersonal = 2,
    kCWSecurityWPAPersonalMixed = 3,
    kCWSecurityWPA2Personal = 4,
    kCWSecurityDynamicWEP = 6,
    kCWSecurityWPAEnterprise = 7,
    kCWSecurityWPAEnterpriseMixed = 8,
    kCWSecurityWPA2Enterprise = 9,
};

// A network's securityMode, the numbering NetworkObject::securityModeForString() also yields.
enum CWSecurityMode : int {
    kCWSecurityModeOpen = 0,
    kCWSecurityModeWEP = 1,
    kCWSecurityModeWPA_PSK = 2,
    kCWSecurityModeWPA2_PSK = 3,
    kCWSecurityMode8021XWEP = 4,
    kCWSecurityModeWPA_Enterprise = 5,
    kCWSecurityModeWPA2_Enterprise = 6,
};

enum CWChannelBand : int {
    kCWChannelBandUnknown = 0,
    kCWChannelBand2GHz = 1,
    kCWChannelBand5GHz = 2,
    kCWChannelBand6GHz = 3, // unknown to the texts, which show it as ""
};

enum CWChannelWidth : int {
    kCWChannelWidthUnknown = 0,
    kCWChannelWidth20MHz = 1,
    kCWChannelWidth40MHz = 2,
    kCWChannelWidth80MHz = 3,
    kCWChannelWidth160MHz = 4,
};

enum CWInterfaceState : int {
    kCWInterfaceStateInactive = 0,
    kCWInterfaceStateScanning = 1,
    kCWInterfaceStateAuthenticating = 2,
    kCWInterfaceStateAssociating = 3,
    kCWInterfaceStateRunning = 4,
};
