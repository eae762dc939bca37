; The installer. tools/make_package.py defines:
;   VERSION  FILES (macros that bring and take away the files)  SIMULATOR (folder of the simulator)
;   SIZE_KB  OUTPUT
;
; Silently:  QorlixSRV-...-setup.exe /S [/SIMULATOR] [/STANDINS] [/D=C:\folder]
; Exit codes: 0 done; 2 broken off, nothing was changed or not everything is there; 3 the server
; runs from that folder, and nothing was changed; 4 done, but without the simulator; 5 the folder
; stands in quotation marks, and nothing was changed.
Unicode true
ManifestSupportedOS all
RequestExecutionLevel admin
SetCompressor /SOLID zlib
SetDateSave on
AllowSkipFiles off

!include LogicLib.nsh
!include FileFunc.nsh
!include Sections.nsh
!include StrFunc.nsh
!include "${FILES}"

${StrStr}

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\QorlixSRV"
!define SOURCES_KEY "SYSTEM\CurrentControlSet\Services\EventLog\Application"

Name "QorlixSRV ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES\QorlixSRV"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" InstallLocation
ShowInstDetails show
ShowUninstDetails show
XPStyle on
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "QorlixSRV"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "QorlixSRV set-up"
VIAddVersionKey LegalCopyright ""

Page components
Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

; A program that runs cannot be replaced or taken away. Nobody's server is stopped for it.
!macro REQUIRE_STOPPED FOLDER
  ${If} ${FileExists} "${FOLDER}\QorlixSRV.exe"
    ClearErrors
    FileOpen $R0 "${FOLDER}\QorlixSRV.exe" a
    ${If} ${Errors}
      MessageBox MB_OK|MB_ICONSTOP "The server is running. Stop it first: qorlixctl stop" /SD IDOK
      SetErrorLevel 3
      Quit
    ${EndIf}
    FileClose $R0
  ${EndIf}
!macroend

; A folder in quotation marks, as PowerShell and others pass one with blanks, is not taken for one:
; another folder would be worked on, and nothing would tell.
!macro REFUSE_FOLDER_IN_QUOTES
  System::Call "kernel32::GetCommandLine() t .R0"  ; $CMDLINE lacks what was taken for a folder
  ${StrStr} $R1 $R0 '"/D='
  ${StrStr} $R2 $R0 '/D="'
  ${If} "$R1$R2" != ""
    MessageBox MB_OK|MB_ICONSTOP "/D=FOLDER stands last and without quotation marks." /SD IDOK
    SetErrorLevel 5
    Quit
  ${EndIf}
!macroend

; The simulator that was put beside the server, told from a library that has taken its place.
!macro TIME_OF_BOARD_LIBRARY RESULT
  GetFileTime "$INSTDIR\boardsvc32.dll" $R3 $R4
  StrCpy ${RESULT} "$R3 $R4"
!macroend

; Where the event viewer finds the texts of a source. One that others registered stays theirs.
!macro REGISTER_SOURCE NAME CATEGORIES
  ReadRegStr $R0 HKLM "${SOURCES_KEY}\${NAME}" EventMessageFile
  ${If} $R0 == ""
  ${OrIf} $R0 == "$INSTDIR\QorlixSRV.exe"
    WriteRegExpandStr HKLM "${SOURCES_KEY}\${NAME}" EventMessageFile "$INSTDIR\QorlixSRV.exe"
    WriteRegDWORD HKLM "${SOURCES_KEY}\${NAME}" TypesSupported 7
    !if ${CATEGORIES} > 0
      WriteRegExpandStr HKLM "${SOURCES_KEY}\${NAME}" CategoryMessageFile "$INSTDIR\QorlixSRV.exe"
      WriteRegDWORD HKLM "${SOURCES_KEY}\${NAME}" CategoryCount ${CATEGORIES}
    !endif
  ${EndIf}
!macroend

!macro REMOVE_SOURCE NAME
  ReadRegStr $R0 HKLM "${SOURCES_KEY}\${NAME}" EventMessageFile
  ${If} $R0 == "$INSTDIR\QorlixSRV.exe"
    DeleteRegKey HKLM "${SOURCES_KEY}\${NAME}"
  ${EndIf}
!macroend

; One installation per machine: an earlier one goes first, wherever it is.
Section "-Earlier installation"
  !insertmacro REQUIRE_STOPPED "$INSTDIR"
  ReadRegStr $R1 HKLM "${UNINSTALL_KEY}" InstallLocation
  ${If} $R1 != ""
  ${AndIf} ${FileExists} "$R1\Uninstall.exe"
    !insertmacro REQUIRE_STOPPED "$R1"
    ; With _?= it runs from where it is, so that there is an end to wait for.
    ExecWait '"$R1\Uninstall.exe" /S _?=$R1' $R2
    ${If} $R2 <> 0
      SetErrorLevel 2
      Abort "The earlier installation in $R1 could not be removed."
    ${EndIf}
    Delete "$R1\Uninstall.exe"
    RMDir "$R1"
  ${EndIf}
SectionEnd

Section "Server and qorlixctl"
  SectionIn RO
  !insertmacro INSTALL_PROGRAMS
  !insertmacro REGISTER_SOURCE "MIREL RegistryOperation" 0
  !insertmacro REGISTER_SOURCE "Zqotrc" 1

  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\Uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayName "QorlixSRV"
  WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\QorlixSRV.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\Uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\Uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" EstimatedSize ${SIZE_KB}
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" NoRepair 1
SectionEnd

Section "Headers and libraries for clients"
  !insertmacro INSTALL_DEVELOPMENT
SectionEnd

; Also in a folder of their own they are for machines without the real libraries only.
Section /o "Stand-ins, in a folder of their own" STANDINS_SECTION
  !insertmacro INSTALL_STANDINS
SectionEnd

; For a machine without boards and without the vendor's library. Where that library is, it stays.
Section /o "Board simulator beside the server" SIMULATOR_SECTION
  ${If} ${FileExists} "$INSTDIR\boardsvc32.dll"
  ${OrIf} ${FileExists} "$SYSDIR\boardsvc32.dll"
    MessageBox MB_OK|MB_ICONSTOP "This machine has a boardsvc32.dll. The simulator is left out." \
      /SD IDOK
    SetErrorLevel 4
  ${Else}
    SetOutPath "$INSTDIR"
    File "${SIMULATOR}/boardsvc32.dll"
    !insertmacro TIME_OF_BOARD_LIBRARY $R1
    WriteRegStr HKLM "${UNINSTALL_KEY}" Simulator $R1
  ${EndIf}
SectionEnd

!macro SELECT_BY_SWITCH SWITCH SECTION
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "${SWITCH}" $R0
  ${IfNot} ${Errors}
    !insertmacro SelectSection ${SECTION}
  ${EndIf}
!macroend

; What an earlier installation had does not matter: no machine gets boards that are not there unless
; somebody asks for them.
Function .onInit
  !insertmacro REFUSE_FOLDER_IN_QUOTES
  !insertmacro SELECT_BY_SWITCH "/SIMULATOR" ${SIMULATOR_SECTION}
  !insertmacro SELECT_BY_SWITCH "/STANDINS" ${STANDINS_SECTION}
FunctionEnd

; Takes away what was brought here. The stack's registry tree is the stack's, and what others put
; into the folder is theirs.
Section Uninstall
  !insertmacro REQUIRE_STOPPED "$INSTDIR"
  ReadRegStr $R1 HKLM "${UNINSTALL_KEY}" Simulator
  !insertmacro TIME_OF_BOARD_LIBRARY $R2
  ${If} $R1 != ""
  ${AndIf} $R1 == $R2
    Delete "$INSTDIR\boardsvc32.dll"
  ${EndIf}
  !insertmacro REMOVE_FILES
  !insertmacro REMOVE_SOURCE "MIREL RegistryOperation"
  !insertmacro REMOVE_SOURCE "Zqotrc"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  SetOutPath "$TEMP"
  Delete "$INSTDIR\Uninstall.exe"
  RMDir "$INSTDIR"
SectionEnd
