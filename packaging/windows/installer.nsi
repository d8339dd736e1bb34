; The installer of the control panel, for one user, without administrator rights.
;
;   makensis -INPUTCHARSET UTF8 -DVERSION=… -DFILES=… -DICON=… -DOUTPUT=… installer.nsi
;
; FILES is a generated script with the macros InstallFiles and RemoveFiles. Command line:
;
;   setup.exe /S                 installs without questions
;   setup.exe /S /AUTOSTART      … and starts the panel at login
;   uninstall.exe /S             removes the program and leaves the settings
;   uninstall.exe /S /PURGE      removes the settings too
;
; A running copy is ended first, and started again after a silent upgrade. Exit code 3: it did not
; end, or it is another user's; nothing was changed. Exit code 4: in the folder is an uninstaller
; that is not known to be this program's; nothing was changed.

Target amd64-unicode
SetCompressor /SOLID lzma

!include "MUI2.nsh"
!include "FileFunc.nsh"
!include "LogicLib.nsh"
!include "WinVer.nsh"
!include "WinMessages.nsh"
!include "running_copy.nsh"
!include "${FILES}"

!define PROGRAM "QuorvelDriver.exe"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\QuorvelDriver"
!define POLICIES_KEY "Software\Microsoft\Windows\CurrentVersion\Policies\System"
!define TOKEN_ELEVATION_TYPE 18
!define TOKEN_ELEVATION_TYPE_FULL 2
!define SHORTCUT "$SMPROGRAMS\Quorvel control panel.lnk"
!define GUIDE_SHORTCUT "$SMPROGRAMS\Quorvel control panel guide.lnk"
!define SETTINGS_FOLDER "$APPDATA\QuorvelDriver"
!define STILL_RUNNING 3
!define FOREIGN_FOLDER 4

Name "$(ProductName)"
BrandingText "Quorvel ${VERSION}"
OutFile "${OUTPUT}"
RequestExecutionLevel user
ManifestDPIAware true
InstallDir "$LOCALAPPDATA\Programs\QuorvelDriver"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${NSISDIR}\Contrib\Graphics\Wizard\nsis3-grey.bmp"
!define MUI_WELCOMEPAGE_TEXT "$(WelcomeText)"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION StartProgram

!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_COMPONENTS
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE LeaveFolderPage
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "SimpChinese"
!include "texts.nsh"

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey /LANG=${LANG_ENGLISH} "ProductName" "Quorvel control panel"
VIAddVersionKey /LANG=${LANG_ENGLISH} "CompanyName" "Quorvel"
VIAddVersionKey /LANG=${LANG_ENGLISH} "FileDescription" "Quorvel control panel setup"
VIAddVersionKey /LANG=${LANG_ENGLISH} "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_ENGLISH} "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_ENGLISH} "LegalCopyright" ""
VIAddVersionKey /LANG=${LANG_SIMPCHINESE} "ProductName" "Quorvel 控制面板"
VIAddVersionKey /LANG=${LANG_SIMPCHINESE} "CompanyName" "Quorvel"
VIAddVersionKey /LANG=${LANG_SIMPCHINESE} "FileDescription" "Quorvel 控制面板安装程序"
VIAddVersionKey /LANG=${LANG_SIMPCHINESE} "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_SIMPCHINESE} "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=${LANG_SIMPCHINESE} "LegalCopyright" ""

Var WasRunning

!insertmacro RunningCopyFunctions ""
!insertmacro RunningCopyFunctions "un."

Section "$(ProgramSection)" ProgramSection
    SectionIn RO
    Call RefuseForeignFolder
    Call EndRunningCopy
    ; What an older version installed goes first, so that none of its files stays behind.
    ${If} ${FileExists} "$INSTDIR\uninstall.exe"
        ExecWait '"$INSTDIR\uninstall.exe" /S /UPGRADE _?=$INSTDIR'
    ${EndIf}
    !insertmacro InstallFiles
    SetOutPath "$INSTDIR"
    ; Before there is an uninstaller, which counts as this program's only with it.
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateShortcut "${SHORTCUT}" "$INSTDIR\${PROGRAM}"
    CreateShortcut "${GUIDE_SHORTCUT}" "$INSTDIR\guide\$(GuidePage)"
    Call RegisterProgram
SectionEnd

Section /o "$(AutostartSection)" AutostartSection
    WriteRegStr HKCU "${RUN_KEY}" "QuorvelDriver" '"$INSTDIR\${PROGRAM}"'
SectionEnd

Section -Finish
    ${IfNot} ${SectionIsSelected} ${AutostartSection}
        DeleteRegValue HKCU "${RUN_KEY}" "QuorvelDriver"
    ${EndIf}
    ; The last page offers to start the program; without pages it is left as it was found.
    ${If} ${Silent}
    ${AndIf} $WasRunning = 1
        Call StartProgram
    ${EndIf}
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
    !insertmacro MUI_DESCRIPTION_TEXT ${ProgramSection} "$(ProgramDescription)"
    !insertmacro MUI_DESCRIPTION_TEXT ${AutostartSection} "$(AutostartDescription)"
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Function .onInit
    ${IfNot} ${AtLeastWin10}
        MessageBox MB_OK|MB_ICONSTOP "$(NeedsWindows10)" /SD IDOK
        SetErrorLevel 2
        Quit
    ${EndIf}
    ; An upgrade keeps the choice made before.
    ReadRegStr $0 HKCU "${RUN_KEY}" "QuorvelDriver"
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/AUTOSTART" $2
    ${IfNot} ${Errors}
    ${OrIf} $0 != ""
        !insertmacro SelectSection ${AutostartSection}
    ${EndIf}
FunctionEnd

; $0 = 1 when in $INSTDIR is an uninstaller that was not installed there with this program.
Function IsForeignFolder
    StrCpy $0 0
    ${If} ${FileExists} "$INSTDIR\uninstall.exe"
        ReadRegStr $1 HKCU "${UNINSTALL_KEY}" "InstallLocation"
        ${If} $1 != $INSTDIR
        ${OrIfNot} ${FileExists} "$INSTDIR\${PROGRAM}"
            StrCpy $0 1
        ${EndIf}
    ${EndIf}
FunctionEnd

Function LeaveFolderPage
    Call IsForeignFolder
    ${If} $0 = 1
        MessageBox MB_OK|MB_ICONEXCLAMATION "$(ForeignFolder)"
        Abort
    ${EndIf}
FunctionEnd

Function RefuseForeignFolder
    Call IsForeignFolder
    ${If} $0 = 1
        SetErrorLevel ${FOREIGN_FOLDER}
        Quit
    ${EndIf}
FunctionEnd

; $0 = 1 when it runs with more rights than the user's other programs: "as administrator", where
; Windows tells the two apart.
Function IsElevated
    StrCpy $0 0
    System::Call 'kernel32::GetCurrentProcess() p .r4'
    System::Call 'advapi32::OpenProcessToken(p r4, i ${TOKEN_QUERY}, *p .r5) i .r6'
    ${If} $6 <> 0
        System::Call 'advapi32::GetTokenInformation(p r5, i ${TOKEN_ELEVATION_TYPE}, *i .r7, i 4, *i .r8) i .r6'
        System::Call 'kernel32::CloseHandle(p r5)'
        ReadRegDWORD $8 HKLM "${POLICIES_KEY}" "EnableLUA"
        ${If} $6 <> 0
        ${AndIf} $7 = ${TOKEN_ELEVATION_TYPE_FULL}
        ${AndIf} $8 != 0
            StrCpy $0 1
        ${EndIf}
    ${EndIf}
FunctionEnd

; With more rights than the others it would refuse the ASIO driver in them, so the Explorer starts
; it then, as it starts all the others.
Function StartProgram
    Call IsElevated
    ${If} $0 = 1
        Exec '"$WINDIR\explorer.exe" "$INSTDIR\${PROGRAM}"'
    ${Else}
        Exec '"$INSTDIR\${PROGRAM}"'
    ${EndIf}
FunctionEnd

Function RegisterProgram
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "$(ProductName)"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Quorvel"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0
FunctionEnd

Section "un.$(ProgramSection)" UnProgramSection
    SectionIn RO
    Call un.EndRunningCopy
    !insertmacro RemoveFiles
    Delete "$INSTDIR\uninstall.exe"
    ; Only when nothing of the user's own lies in it.
    RMDir "$INSTDIR"
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/UPGRADE" $1
    ${If} ${Errors}
        Delete "${SHORTCUT}"
        Delete "${GUIDE_SHORTCUT}"
        DeleteRegValue HKCU "${RUN_KEY}" "QuorvelDriver"
        DeleteRegKey HKCU "${UNINSTALL_KEY}"
    ${EndIf}
SectionEnd

!macro RemoveSettings NAME
    Delete "${SETTINGS_FOLDER}\${NAME}.ini"
    ; What a crash in the middle of saving has left, and one of version 2025.10.9.
    Delete "${SETTINGS_FOLDER}\${NAME}.ini.saving"
    Delete "${SETTINGS_FOLDER}\${NAME}.ini.lock"
!macroend

Section /o "un.$(SettingsSection)" UnSettingsSection
    !insertmacro RemoveSettings "ka1"
    !insertmacro RemoveSettings "ka2"
    !insertmacro RemoveSettings "ks"
    !insertmacro RemoveSettings "setting"
    RMDir "${SETTINGS_FOLDER}"
SectionEnd

!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
    !insertmacro MUI_DESCRIPTION_TEXT ${UnProgramSection} "$(ProgramDescription)"
    !insertmacro MUI_DESCRIPTION_TEXT ${UnSettingsSection} "$(SettingsDescription)"
!insertmacro MUI_UNFUNCTION_DESCRIPTION_END

Function un.onInit
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/PURGE" $1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${UnSettingsSection}
    ${EndIf}
FunctionEnd
