@echo off
rem driver_unload_test SIMCTL.exe: quorvelsim goes with its interface still plugged in, leaves
rem neither its control door nor the interface's name behind, and starts anew with nothing plugged.
set simctl=%1
set simctl=%simctl:/=\%

%simctl% plug ka2 9
if errorlevel 1 goto failed
net stop quorvelsim
if errorlevel 1 goto failed
%simctl% state
if not errorlevel 1 goto failed
net start quorvelsim
if errorlevel 1 goto failed
%simctl% state | find "plugged: no"
if errorlevel 1 goto failed
%simctl% plug ka2 9
if errorlevel 1 goto failed
%simctl% reset
if errorlevel 1 goto failed
echo passed
exit /b 0

:failed
echo failed
exit /b 1
