; Ends a running copy before its files are replaced or removed.
;
; RunningCopyFunctions PREFIX defines the functions for the installer ("") or the uninstaller
; ("un."). They need PROGRAM, STILL_RUNNING and $WasRunning, and change $0 to $9 and $R0 to $R3. No
; process is ever terminated: the program is asked, and only this user's own copy in $INSTDIR.

!define ENDSESSION_CLOSEAPP 1
!define PROCESS_QUERY_LIMITED_INFORMATION 0x1000
!define TOKEN_QUERY 0x0008
!define TOKEN_USER 1
; The window with which the program listens, whatever else it shows.
!define SESSION_END_WINDOW "QuorvelDriverSessionEnd"
!ifndef WM_QUERYENDSESSION
    !define WM_QUERYENDSESSION 0x0011
!endif
!ifndef WM_ENDSESSION
    !define WM_ENDSESSION 0x0016
!endif

!macro RunningCopyFunctions PREFIX

; $0 = 1 when the installed program runs: Windows lets nobody write to it then.
Function ${PREFIX}IsRunning
    StrCpy $0 0
    ${If} ${FileExists} "$INSTDIR\${PROGRAM}"
        ClearErrors
        FileOpen $1 "$INSTDIR\${PROGRAM}" a
        ${If} ${Errors}
            StrCpy $0 1
        ${Else}
            FileClose $1
        ${EndIf}
    ${EndIf}
FunctionEnd

; $0 = the user (as a SID's text) to whom the process $4 belongs, "" when it may not be asked.
Function ${PREFIX}UserOfProcess
    StrCpy $0 ""
    System::Call 'advapi32::OpenProcessToken(p r4, i ${TOKEN_QUERY}, *p .r5) i .r6'
    ${If} $6 = 0
        Return
    ${EndIf}
    System::Alloc 256
    Pop $7
    System::Call 'advapi32::GetTokenInformation(p r5, i ${TOKEN_USER}, p r7, i 256, *i .r8) i .r6'
    ${If} $6 <> 0
        System::Call '*$7(p .r8)'
        System::Call 'advapi32::ConvertSidToStringSidW(p r8, *p .r9) i .r6'
        ${If} $6 <> 0
            System::Call 'kernel32::lstrcpynW(w .r0, p r9, i ${NSIS_MAX_STRLEN})'
            System::Call 'kernel32::LocalFree(p r9)'
        ${EndIf}
    ${EndIf}
    System::Free $7
    System::Call 'kernel32::CloseHandle(p r5)'
FunctionEnd

; $0 = 1 when the window $2 belongs to the program in $INSTDIR and to the user who installs.
Function ${PREFIX}IsOwnWindow
    StrCpy $1 0
    System::Call 'user32::GetWindowThreadProcessId(p r2, *i .r3)'
    System::Call 'kernel32::OpenProcess(i ${PROCESS_QUERY_LIMITED_INFORMATION}, i 0, i r3) p .r4'
    ${If} $4 P<> 0
        StrCpy $5 ${NSIS_MAX_STRLEN}
        System::Call 'kernel32::QueryFullProcessImageNameW(p r4, i 0, w .r0, *i r5 r5) i .r6'
        StrCpy $7 "$INSTDIR\${PROGRAM}"
        System::Call 'kernel32::GetLongPathNameW(w r7, w .r7, i ${NSIS_MAX_STRLEN})'
        ${If} $6 <> 0
        ${AndIf} $0 == $7
            Push $4
            Call ${PREFIX}UserOfProcess
            StrCpy $1 $0
            System::Call 'kernel32::GetCurrentProcess() p .r4'
            Call ${PREFIX}UserOfProcess
            Pop $4
            ${If} $0 != ""
            ${AndIf} $0 == $1
                StrCpy $1 1
            ${Else}
                StrCpy $1 0
            ${EndIf}
        ${EndIf}
        System::Call 'kernel32::CloseHandle(p r4)'
    ${EndIf}
    StrCpy $0 $1
FunctionEnd

; Tells what Windows tells at the end of a session to the program's windows of the class $R0, all
; of them when it is "". Merely closed, they would only hide. $R1 = how many were told.
Function ${PREFIX}TellWindows
    StrCpy $R1 0
    StrCpy $2 0
    ${Do}
        FindWindow $2 $R0 "" 0 $2
        ${If} $2 P= 0
            ${ExitDo}
        ${EndIf}
        Call ${PREFIX}IsOwnWindow
        ${If} $0 = 1
            IntOp $R1 $R1 + 1
            SendMessage $2 ${WM_QUERYENDSESSION} 0 ${ENDSESSION_CLOSEAPP} $3 /TIMEOUT=3000
            ${If} $3 <> 0
                SendMessage $2 ${WM_ENDSESSION} 1 ${ENDSESSION_CLOSEAPP} /TIMEOUT=3000
            ${EndIf}
        ${EndIf}
    ${Loop}
FunctionEnd

; Older versions listen with their shown windows only.
Function ${PREFIX}AskToEnd
    StrCpy $R0 ${SESSION_END_WINDOW}
    Call ${PREFIX}TellWindows
    ${If} $R1 = 0
        StrCpy $R0 ""
        Call ${PREFIX}TellWindows
    ${EndIf}
FunctionEnd

; $0 as IsRunning, after asking the program for ten seconds or more. Asked again and again: one
; that has only just been started does not listen yet.
Function ${PREFIX}WaitForEnd
    StrCpy $R2 10
    ${Do}
        Call ${PREFIX}AskToEnd
        StrCpy $R3 5
        ${Do}
            Call ${PREFIX}IsRunning
            ${If} $0 = 0
                Return
            ${EndIf}
            Sleep 200
            IntOp $R3 $R3 - 1
        ${LoopUntil} $R3 = 0
        IntOp $R2 $R2 - 1
    ${LoopUntil} $R2 = 0
FunctionEnd

Function ${PREFIX}EndRunningCopy
    Call ${PREFIX}IsRunning
    StrCpy $WasRunning $0
    ${If} $0 = 0
        Return
    ${EndIf}
    MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "$(ProgramRuns)" /SD IDOK IDOK +2
    Call ${PREFIX}GiveUp
    ${Do}
        Call ${PREFIX}WaitForEnd
        ${If} $0 = 0
            ${ExitDo}
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(ProgramStillRuns)" /SD IDCANCEL IDRETRY +2
        Call ${PREFIX}GiveUp
    ${Loop}
FunctionEnd

Function ${PREFIX}GiveUp
    SetErrorLevel ${STILL_RUNNING}
    Quit
FunctionEnd

!macroend
