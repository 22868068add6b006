# SPDX-License-Identifier: GPL-3.0-or-later
'''A small NetworkManager for the Linux backend's tests (a python-dbusmock template).

One Wi-Fi device "wlan0". Activations end the way SetOutcome() says, after a delay, with
the device and active-connection signals NetworkManager sends; SetReplyDelay() makes the
activation calls themselves answer late (after those signals, if it is the longer one).
What the program asked for is readable through LastSettingsJson(), LastActivated() and
Counters().
'''

import json

import dbus
from gi.repository import GLib

from dbusmock import MOCK_IFACE, mockobject

BUS_NAME = 'org.freedesktop.NetworkManager'
MAIN_OBJ = '/org/freedesktop/NetworkManager'
MAIN_IFACE = 'org.freedesktop.NetworkManager'
SYSTEM_BUS = True

SETTINGS_OBJ = '/org/freedesktop/NetworkManager/Settings'
SETTINGS_IFACE = 'org.freedesktop.NetworkManager.Settings'
CONNECTION_IFACE = 'org.freedesktop.NetworkManager.Settings.Connection'
DEVICE_OBJ = '/org/freedesktop/NetworkManager/Devices/1'
DEVICE_IFACE = 'org.freedesktop.NetworkManager.Device'
WIRELESS_IFACE = 'org.freedesktop.NetworkManager.Device.Wireless'
AP_IFACE = 'org.freedesktop.NetworkManager.AccessPoint'
ACTIVE_IFACE = 'org.freedesktop.NetworkManager.Connection.Active'

DEVICE_ACTIVATED = 100
DEVICE_DISCONNECTED = 30
DEVICE_FAILED = 120
DEVICE_CONFIG = 50


def plain(value):
    '''D-Bus values as JSON-friendly Python values; byte arrays as "hex:..." text.'''
    if isinstance(value, dbus.Boolean):
        return bool(value)
    if isinstance(value, (dbus.ByteArray, bytes)):
        return 'hex:' + bytes(value).hex()
    if isinstance(value, dbus.Array) and (value.signature == 'y' or
                                          (len(value) and isinstance(value[0], dbus.Byte))):
        return 'hex:' + bytes(int(b) for b in value).hex()
    if isinstance(value, dict):
        return {str(k): plain(v) for k, v in value.items()}
    if isinstance(value, (list, tuple)):
        return [plain(v) for v in value]
    if isinstance(value, (int, float)):
        return int(value) if isinstance(value, int) else float(value)
    return str(value)


def load(mock, parameters):
    mock.state = {'scan': 0, 'disconnect': 0, 'activate': 0, 'addandactivate': 0}
    mock.outcome = (2, 1, 0, 50)  # active state, active reason, device reason, delay ms
    mock.reply_delay = 0
    mock.scan_busy = False
    mock.last_settings = {}
    mock.last_activated = ''
    mock.connection_count = 0
    mock.active_count = 0
    mock.AddProperties(MAIN_IFACE, {
        'WirelessEnabled': parameters.get('WirelessEnabled', True),
        'WirelessHardwareEnabled': parameters.get('WirelessHardwareEnabled', True),
        'Devices': dbus.Array([dbus.ObjectPath(DEVICE_OBJ)], signature='o'),
        'ActiveConnections': dbus.Array([], signature='o'),
        'Version': '1.42.4',
    })

    mock.AddObject(SETTINGS_OBJ, SETTINGS_IFACE,
                   {'Connections': dbus.Array([], signature='o')},
                   [('ListConnections', '', 'ao',
                     f"ret = self.Get('{SETTINGS_IFACE}', 'Connections')")])

    mock.AddObject(DEVICE_OBJ, DEVICE_IFACE, {
        'Interface': 'wlan0',
        'DeviceType': dbus.UInt32(2),
        'State': dbus.UInt32(DEVICE_DISCONNECTED),
        'ActiveConnection': dbus.ObjectPath('/'),
    }, [('Disconnect', '', '', f"objects['{MAIN_OBJ}'].device_disconnect()")])
    device = mockobject.objects[DEVICE_OBJ]
    device.AddProperties(WIRELESS_IFACE, {'AccessPoints': dbus.Array([], signature='o')})
    device.AddMethod(WIRELESS_IFACE, 'RequestScan', 'a{sv}', '',
                     f"objects['{MAIN_OBJ}'].request_scan()")

    mock.device_disconnect = lambda: device_disconnect(mock)
    mock.request_scan = lambda: request_scan(mock)


def device_disconnect(mock):
    mock.state['disconnect'] += 1
    device = mockobject.objects[DEVICE_OBJ]
    old = device.Get(DEVICE_IFACE, 'State')
    device.Set(DEVICE_IFACE, 'State', dbus.UInt32(DEVICE_DISCONNECTED))
    device.EmitSignal(DEVICE_IFACE, 'StateChanged', 'uuu',
                      [dbus.UInt32(DEVICE_DISCONNECTED), old, dbus.UInt32(39)])


def request_scan(mock):
    mock.state['scan'] += 1
    if mock.scan_busy:
        raise dbus.exceptions.DBusException(
            'Scanning not allowed while already scanning',
            name='org.freedesktop.NetworkManager.Device.NotAllowed')


def add_connection_object(mock, settings, secrets):
    path = f'{SETTINGS_OBJ}/{mock.connection_count}'
    mock.connection_count += 1
    mock.AddObject(path, CONNECTION_IFACE, {}, [])
    conn = mockobject.objects[path]
    conn.settings = settings
    conn.secrets = secrets
    conn.AddMethod(CONNECTION_IFACE, 'GetSettings', '', 'a{sa{sv}}', 'ret = self.settings')
    conn.AddMethod(CONNECTION_IFACE, 'GetSecrets', 's', 'a{sa{sv}}',
                   'ret = {args[0]: self.secrets[args[0]]} if args[0] in self.secrets else {}')
    conn.AddMethod(CONNECTION_IFACE, 'Update', 'a{sa{sv}}', '',
                   'self.settings = args[0]; self.EmitSignal("%s", "Updated", "", [])'
                   % CONNECTION_IFACE)
    settings_obj = mockobject.objects[SETTINGS_OBJ]
    conns = settings_obj.Get(SETTINGS_IFACE, 'Connections')
    conns.append(dbus.ObjectPath(path))
    settings_obj.Set(SETTINGS_IFACE, 'Connections', conns)
    settings_obj.EmitSignal(SETTINGS_IFACE, 'NewConnection', 'o', [dbus.ObjectPath(path)])
    return path


def start_activation(mock, connection_path):
    path = f'{MAIN_OBJ}/ActiveConnection/{mock.active_count}'
    mock.active_count += 1
    mock.AddObject(path, ACTIVE_IFACE, {
        'State': dbus.UInt32(1),
        'Connection': dbus.ObjectPath(connection_path),
        'Devices': dbus.Array([dbus.ObjectPath(DEVICE_OBJ)], signature='o'),
    }, [])
    state, reason, device_reason, delay = mock.outcome
    device = mockobject.objects[DEVICE_OBJ]
    device.Set(DEVICE_IFACE, 'State', dbus.UInt32(DEVICE_CONFIG))

    def finish():
        active = mockobject.objects.get(path)
        if active is None:
            return False
        if state == 2:
            device.Set(DEVICE_IFACE, 'State', dbus.UInt32(DEVICE_ACTIVATED))
            device.Set(DEVICE_IFACE, 'ActiveConnection', dbus.ObjectPath(path))
            device.EmitSignal(DEVICE_IFACE, 'StateChanged', 'uuu',
                              [dbus.UInt32(DEVICE_ACTIVATED), dbus.UInt32(DEVICE_CONFIG),
                               dbus.UInt32(0)])
        else:
            device.Set(DEVICE_IFACE, 'State', dbus.UInt32(DEVICE_FAILED))
            device.EmitSignal(DEVICE_IFACE, 'StateChanged', 'uuu',
                              [dbus.UInt32(DEVICE_FAILED), dbus.UInt32(DEVICE_CONFIG),
                               dbus.UInt32(device_reason)])
        active.Set(ACTIVE_IFACE, 'State', dbus.UInt32(state))
        active.EmitSignal(ACTIVE_IFACE, 'StateChanged', 'uu',
                          [dbus.UInt32(state), dbus.UInt32(reason)])
        return False

    if state != 0:  # 0: NetworkManager never answers (the join times out)
        GLib.timeout_add(delay, finish)
    return path


@dbus.service.method(MAIN_IFACE, in_signature='s', out_signature='o')
def GetDeviceByIpIface(_self, iface):
    if iface != 'wlan0':
        raise dbus.exceptions.DBusException(
            'No device found for the requested iface.',
            name='org.freedesktop.NetworkManager.UnknownDevice')
    return dbus.ObjectPath(DEVICE_OBJ)


def answer(mock, reply, ok):
    if not mock.reply_delay:
        ok(*reply)
        return

    def later():
        ok(*reply)
        return False
    GLib.timeout_add(mock.reply_delay, later)


@dbus.service.method(MAIN_IFACE, in_signature='a{sa{sv}}oo', out_signature='oo',
                     async_callbacks=('ok', '_err'))
def AddAndActivateConnection(self, settings, device, specific, ok, _err):
    self.state['addandactivate'] += 1
    self.last_settings = plain(settings)
    self.last_settings['_specific'] = str(specific)
    connection = add_connection_object(self, settings, {})
    answer(self, (dbus.ObjectPath(connection),
                  dbus.ObjectPath(start_activation(self, connection))), ok)


@dbus.service.method(MAIN_IFACE, in_signature='ooo', out_signature='o',
                     async_callbacks=('ok', '_err'))
def ActivateConnection(self, connection, device, specific, ok, _err):
    self.state['activate'] += 1
    self.last_activated = str(connection)
    answer(self, (dbus.ObjectPath(start_activation(self, str(connection))),), ok)


@dbus.service.method(MAIN_IFACE, in_signature='o', out_signature='')
def DeactivateConnection(self, active):
    if str(active) in mockobject.objects:
        self.RemoveObject(str(active))


@dbus.service.method(MOCK_IFACE, in_signature='uuuu', out_signature='')
def SetOutcome(self, state, reason, device_reason, delay_ms):
    self.outcome = (int(state), int(reason), int(device_reason), int(delay_ms))


@dbus.service.method(MOCK_IFACE, in_signature='u', out_signature='')
def SetReplyDelay(self, delay_ms):
    self.reply_delay = int(delay_ms)


@dbus.service.method(MOCK_IFACE, in_signature='b', out_signature='')
def SetScanBusy(self, busy):
    self.scan_busy = bool(busy)


@dbus.service.method(MOCK_IFACE, in_signature='a{sa{sv}}a{sa{sv}}', out_signature='o')
def AddSavedConnection(self, settings, secrets):
    return dbus.ObjectPath(add_connection_object(self, settings, secrets))


@dbus.service.method(MOCK_IFACE, in_signature='su', out_signature='o')
def AddAccessPoint(self, bssid, rsn_flags):
    path = f'{MAIN_OBJ}/AccessPoint/{len(mockobject.objects)}'
    self.AddObject(path, AP_IFACE, {'HwAddress': bssid.upper(),
                                    'RsnFlags': dbus.UInt32(rsn_flags),
                                    'WpaFlags': dbus.UInt32(0)}, [])
    device = mockobject.objects[DEVICE_OBJ]
    aps = device.Get(WIRELESS_IFACE, 'AccessPoints')
    aps.append(dbus.ObjectPath(path))
    device.Set(WIRELESS_IFACE, 'AccessPoints', aps)
    return dbus.ObjectPath(path)


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='s')
def LastSettingsJson(self):
    return json.dumps(self.last_settings)


@dbus.service.method(MOCK_IFACE, in_signature='o', out_signature='s')
def SavedSettingsJson(self, path):
    return json.dumps(plain(mockobject.objects[str(path)].settings))


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='s')
def LastActivated(self):
    return self.last_activated


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='a{si}')
def Counters(self):
    return self.state
