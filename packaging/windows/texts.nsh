; The installer's own texts; the pages bring theirs.

LangString ProductName ${LANG_ENGLISH} "Quorvel control panel"
LangString ProductName ${LANG_SIMPCHINESE} "Quorvel 控制面板"

LangString WelcomeText ${LANG_ENGLISH} "This installs the control panel of the Quorvel KA1, KA2 and KS for you alone; no administrator is needed. Settings that you have made before are kept.$\r$\n$\r$\n$_CLICK"
LangString WelcomeText ${LANG_SIMPCHINESE} "本程序将为当前用户安装 Quorvel KA1、KA2 和 KS 的控制面板，无需管理员权限。以前的设置会保留。$\r$\n$\r$\n$_CLICK"

LangString ProgramSection ${LANG_ENGLISH} "Control panel"
LangString ProgramSection ${LANG_SIMPCHINESE} "控制面板"
LangString ProgramDescription ${LANG_ENGLISH} "The program, its guide, and their entries in the Start menu."
LangString ProgramDescription ${LANG_SIMPCHINESE} "程序、使用指南及其开始菜单项。"

LangString GuidePage ${LANG_ENGLISH} "en_US.html"
LangString GuidePage ${LANG_SIMPCHINESE} "zh_CN.html"

LangString AutostartSection ${LANG_ENGLISH} "Start at login"
LangString AutostartSection ${LANG_SIMPCHINESE} "登录时启动"
LangString AutostartDescription ${LANG_ENGLISH} "Starts the control panel whenever you log in."
LangString AutostartDescription ${LANG_SIMPCHINESE} "每次登录时启动控制面板。"

LangString SettingsSection ${LANG_ENGLISH} "Settings"
LangString SettingsSection ${LANG_SIMPCHINESE} "设置"
LangString SettingsDescription ${LANG_ENGLISH} "Your levels, switches and options. Left in place unless chosen."
LangString SettingsDescription ${LANG_SIMPCHINESE} "您的音量、开关和选项。不勾选则保留。"

LangString ProgramRuns ${LANG_ENGLISH} "The Quorvel control panel is running and has to be closed. No settings are lost.$\r$\n$\r$\nClose it now?"
LangString ProgramRuns ${LANG_SIMPCHINESE} "Quorvel 控制面板正在运行，需要先关闭。设置不会丢失。$\r$\n$\r$\n现在关闭吗？"
LangString ProgramStillRuns ${LANG_ENGLISH} "The Quorvel control panel is still running.$\r$\n$\r$\nChoose $\"Quit$\" in the menu of its icon in the notification area, then try again."
LangString ProgramStillRuns ${LANG_SIMPCHINESE} "Quorvel 控制面板仍在运行。$\r$\n$\r$\n请在通知区域图标的菜单中选择“退出”，然后重试。"

LangString ForeignFolder ${LANG_ENGLISH} "In this folder is an uninstall.exe that did not come with the control panel installed for you.$\r$\n$\r$\nChoose another folder, or remove that file."
LangString ForeignFolder ${LANG_SIMPCHINESE} "此文件夹中的 uninstall.exe 不属于为您安装的控制面板。$\r$\n$\r$\n请选择其他文件夹，或删除该文件。"

LangString NeedsWindows10 ${LANG_ENGLISH} "The Quorvel control panel needs Windows 10 or later."
LangString NeedsWindows10 ${LANG_SIMPCHINESE} "Quorvel 控制面板需要 Windows 10 或更高版本。"
