<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>TrayIcon</name>
    <message>
        <source>Quit</source>
        <translation>Leave</translation>
    </message>
</context>
</TS>
