; Ends a running copy before its files are replaced or removed.
;
; RunningCopyFunctions PREFIX defines the functions for the installer ("") or the uninstaller
; ("un."). They need PROGRAM, STILL_RUNNING and $WasRunning, and change $0 to $6.

!define ENDSESSION_CLOSEAPP 1
!define PROCESS_QUERY_LIMITED_INFORMATION 0x1000
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

; $0 = the program file behind the window $2.
Function ${PREFIX}ProgramOfWindow
    StrCpy $0 ""
    System::Call 'user32::GetWindowThreadProcessId(p r2, *i .r3)'
    System::Call 'kernel32::OpenProcess(i ${PROCESS_QUERY_LIMITED_INFORMATION}, i 0, i r3) p .r4'
    ${If} $4 P<> 0
        StrCpy $5 ${NSIS_MAX_STRLEN}
        System::Call 'kernel32::QueryFullProcessImageNameW(p r4, i 0, w .r0, *i r5 r5) i .r6'
        System::Call 'kernel32::CloseHandle(p r4)'
        ${If} $6 = 0
            StrCpy $0 ""
        ${EndIf}
    ${EndIf}
FunctionEnd

; Tells all windows of the program what Windows tells them when it must end for an update. Merely
; closed, it would only hide.
Function ${PREFIX}AskToEnd
    StrCpy $2 0
    ${Do}
        FindWindow $2 "" "" 0 $2
        ${If} $2 P= 0
            ${ExitDo}
        ${EndIf}
        Call ${PREFIX}ProgramOfWindow
        ${If} $0 == "$INSTDIR\${PROGRAM}"
            SendMessage $2 ${WM_QUERYENDSESSION} 0 ${ENDSESSION_CLOSEAPP} $3 /TIMEOUT=3000
            ${If} $3 <> 0
                SendMessage $2 ${WM_ENDSESSION} 1 ${ENDSESSION_CLOSEAPP} /TIMEOUT=3000
            ${EndIf}
        ${EndIf}
    ${Loop}
FunctionEnd

; $0 as IsRunning, after giving the program up to ten seconds to end.
Function ${PREFIX}WaitForEnd
    StrCpy $2 50
    ${Do}
        Call ${PREFIX}IsRunning
        ${If} $0 = 0
        ${OrIf} $2 = 0
            ${ExitDo}
        ${EndIf}
        Sleep 200
        IntOp $2 $2 - 1
    ${Loop}
FunctionEnd

Function ${PREFIX}EndRunningCopy
    Call ${PREFIX}IsRunning
    StrCpy $WasRunning $0
    ${If} $0 = 0
        Return
    ${EndIf}
    MessageBox MB_OKCANCEL|MB_ICONEXCLAMATION "$(ProgramRuns)" /SD IDOK IDOK +2
    Call ${PREFIX}GiveUp
    Call ${PREFIX}AskToEnd
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
