; The installer for one user. It needs no administrator's rights and changes only its folder and the user's list of
; installed programs. VERSION and OUTPUT are defined on the command line, the macros with lists of files in files.nsh.
; `/S` installs and removes silently, `/D=FOLDER` as the last argument selects another folder.
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestSupportedOS Win10

!define NAME QelAnalytics
!define LIST_ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"

Name "${NAME} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\${NAME}"
InstallDirRegKey HKCU "${LIST_ENTRY}" InstallLocation
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "Installer of ${NAME}"
VIAddVersionKey CompanyName QEL
VIAddVersionKey LegalCopyright ""

!include files.nsh

!macro AbortIfInUse
  IfErrors 0 +2
    Abort "Some files cannot be written or are in use. End the programs that use them, and try again."
!macroend

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

Section
  ; Another version may have installed files that this version does not have.
  IfFileExists "$INSTDIR\uninstall.exe" 0 +4
    ExecWait '"$INSTDIR\uninstall.exe" /S _?=$INSTDIR' $0
    IntCmp $0 0 +2
      Abort "The installed version cannot be removed. End the programs that use it."

  ClearErrors
  !insertmacro InstallFiles
  !insertmacro AbortIfInUse
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKCU "${LIST_ENTRY}" DisplayName "${NAME}"
  WriteRegStr HKCU "${LIST_ENTRY}" DisplayVersion "${VERSION}"
  WriteRegStr HKCU "${LIST_ENTRY}" Publisher QEL
  WriteRegStr HKCU "${LIST_ENTRY}" InstallLocation "$INSTDIR"
  WriteRegStr HKCU "${LIST_ENTRY}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${LIST_ENTRY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  SectionGetSize 0 $0
  WriteRegDWORD HKCU "${LIST_ENTRY}" EstimatedSize $0
  WriteRegDWORD HKCU "${LIST_ENTRY}" NoModify 1
  WriteRegDWORD HKCU "${LIST_ENTRY}" NoRepair 1
SectionEnd

; Removes only installed files, and only empty folders.
Section Uninstall
  SetOutPath "$TEMP"
  ClearErrors
  !insertmacro OpenPrograms ; fails if one of them runs; then nothing is removed
  !insertmacro AbortIfInUse
  !insertmacro DeleteFiles
  !insertmacro AbortIfInUse
  Delete "$INSTDIR\uninstall.exe"
  !insertmacro RemoveFolders
  RMDir "$INSTDIR"
  DeleteRegKey HKCU "${LIST_ENTRY}"
SectionEnd
