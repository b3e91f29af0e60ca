; Installs Tarnwick for the user who runs it: no administrator, nothing outside the user's own folders.
; Mail is never in here: it lies in %LOCALAPPDATA%\tarnwick, which neither installing nor removing
; touches. packaging/windows/pack.sh calls it with what is defined on its command line.
Target amd64-unicode
!include MUI2.nsh
!include FileFunc.nsh

!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tarnwick"

Name "Tarnwick"
OutFile "${OUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Tarnwick"
InstallDirRegKey HKCU "${KEY}" "InstallLocation"
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS Win10
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Tarnwick"
VIAddVersionKey "FileDescription" "Tarnwick setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "The Tarnwick maintainers, MIT licence"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!insertmacro MUI_PAGE_LICENSE "${STAGE}/licences/tarnwick.txt"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\bin\tarnwick.exe"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; A program that runs can't be replaced or removed.
!macro REFUSE_WHILE_RUNNING NAME
  ${If} ${FileExists} "$INSTDIR\bin\${NAME}"
    ClearErrors
    FileOpen $0 "$INSTDIR\bin\${NAME}" a
    ${If} ${Errors}
      MessageBox MB_OK|MB_ICONEXCLAMATION "Tarnwick is running. Close it, and then start this again." /SD IDOK
      SetErrorLevel 3
      Quit
    ${EndIf}
    FileClose $0
  ${EndIf}
!macroend

!macro REMOVE_FILES
  !include "${REMOVE}"
!macroend

Section
  !insertmacro REFUSE_WHILE_RUNNING "tarnwick.exe"
  !insertmacro REFUSE_WHILE_RUNNING "tarnwick-cli.exe"
  ; What an older version has installed goes by its own list.
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
    ExecWait '"$INSTDIR\uninstall.exe" /S _?=$INSTDIR'
  ${EndIf}
  SetOutPath "$INSTDIR"
  File /r "${STAGE}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  SetOutPath "$INSTDIR\bin"
  CreateShortcut "$SMPROGRAMS\Tarnwick.lnk" "$INSTDIR\bin\tarnwick.exe"
  WriteRegStr HKCU "${KEY}" "DisplayName" "Tarnwick"
  WriteRegStr HKCU "${KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${KEY}" "Publisher" "The Tarnwick maintainers"
  WriteRegStr HKCU "${KEY}" "DisplayIcon" "$INSTDIR\bin\tarnwick.exe"
  WriteRegStr HKCU "${KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${KEY}" "EstimatedSize" ${SIZE}
  WriteRegDWORD HKCU "${KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${KEY}" "NoRepair" 1
SectionEnd

; Removes what was installed, file by file, and folders that are empty then: whatever else lies there stays.
Section "Uninstall"
  !insertmacro REFUSE_WHILE_RUNNING "tarnwick.exe"
  !insertmacro REFUSE_WHILE_RUNNING "tarnwick-cli.exe"
  SetOutPath "$TEMP"
  !insertmacro REMOVE_FILES
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Tarnwick.lnk"
  DeleteRegKey HKCU "${KEY}"
SectionEnd
