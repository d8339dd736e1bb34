@echo off
rem driver_unload_test: quorvelsim goes with its interface still plugged in, leaves neither its
rem control door nor the interface's name behind, and starts anew with nothing plugged. Runs in the
rem folder of quorvel-simctl: batch files lose names that are not of the old code page.

quorvel-simctl.exe plug ka2 9
if errorlevel 1 goto failed
net stop quorvelsim
if errorlevel 1 goto failed
quorvel-simctl.exe state
if not errorlevel 1 goto failed
net start quorvelsim
if errorlevel 1 goto failed
quorvel-simctl.exe state | find "plugged: no"
if errorlevel 1 goto failed
quorvel-simctl.exe plug ka2 9
if errorlevel 1 goto failed
quorvel-simctl.exe reset
if errorlevel 1 goto failed
echo passed
exit /b 0

:failed
echo failed
exit /b 1
