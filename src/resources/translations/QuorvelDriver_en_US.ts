<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en">
<context>
    <name>MainWindow</name>
    <message>
        <source>声卡未连接！</source>
        <translation>No audio interface connected!</translation>
    </message>
</context>
<context>
    <name>Settings</name>
    <message>
        <source>Settings</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>Buffer Size</source>
        <translation>Buffer Size</translation>
    </message>
    <message>
        <source>USB Latency Size</source>
        <translation>USB Latency Size</translation>
    </message>
    <message>
        <source>Samplerate</source>
        <translation>Sample Rate</translation>
    </message>
    <message>
        <source>Safe Mode</source>
        <translation>Safe Mode</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>USB Error</source>
        <translation>USB Error</translation>
    </message>
    <message>
        <source>USB Error Count: %1</source>
        <translation>USB Error Count: %1</translation>
    </message>
</context>
<context>
    <name>TrayIcon</name>
    <message>
        <source>Main Window</source>
        <translation>Main Window</translation>
    </message>
    <message>
        <source>Setup</source>
        <translation>Setup</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>Upgrade Firmware</source>
        <translation>Upgrade Firmware</translation>
    </message>
    <message>
        <source>Win Sound Pannel</source>
        <translation>Windows Sound Panel</translation>
    </message>
    <message>
        <source>Refresh Audio Device</source>
        <translation>Refresh Audio Devices</translation>
    </message>
</context>
<context>
    <name>ka1</name>
    <message>
        <source>MIC</source>
        <translation>MIC</translation>
    </message>
    <message>
        <source>20dB</source>
        <translation>20dB</translation>
    </message>
    <message>
        <source>48V</source>
        <translation>48V</translation>
    </message>
    <message>
        <source>DIRECT</source>
        <translation>DIRECT</translation>
    </message>
    <message>
        <source>MUTE</source>
        <translation>MUTE</translation>
    </message>
    <message>
        <source>DIM</source>
        <translation>DIM</translation>
    </message>
    <message>
        <source>INPUT</source>
        <translation>INPUT</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>Gain</translation>
    </message>
    <message>
        <source>Phone To HP Volume</source>
        <translation>Phone To HP Volume</translation>
    </message>
    <message>
        <source>HEADPHONE</source>
        <translation>HEADPHONE</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>INST</source>
        <translation>INST</translation>
    </message>
    <message>
        <source>-160 dB</source>
        <translation>-160 dB</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Level</translation>
    </message>
</context>
<context>
    <name>ka2</name>
    <message>
        <source>DIRECT</source>
        <translation>DIRECT</translation>
    </message>
    <message>
        <source>MIC1</source>
        <translation>MIC1</translation>
    </message>
    <message>
        <source>MIC2</source>
        <translation>MIC2</translation>
    </message>
    <message>
        <source>SPEAKER</source>
        <translation>SPEAKER</translation>
    </message>
    <message>
        <source>Phone To SP Volume</source>
        <translation>Phone To SP Volume</translation>
    </message>
    <message>
        <source>HEADPHONE</source>
        <translation>HEADPHONE</translation>
    </message>
    <message>
        <source>Phone To HP Volume</source>
        <translation>Phone To HP Volume</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>Gain</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Level</translation>
    </message>
</context>
<context>
    <name>ks</name>
    <message>
        <source>DIRECT</source>
        <translation>DIRECT</translation>
    </message>
    <message>
        <source>MIC</source>
        <translation>MIC</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>Gain</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Level</translation>
    </message>
</context>
</TS>
