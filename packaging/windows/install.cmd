@echo off
rem Registers the classes of vellum250 for 64-bit and 32-bit programs.
rem   install.cmd          for everyone; run it as administrator
rem   install.cmd /user    for you alone
rem uninstall.cmd takes the same and undoes it.
setlocal
set "here=%~dp0"
set "what=/s"
set "done=registered"
if /i "%~1"=="/u" (
  set "what=/s /u"
  set "done=no longer registered"
  shift
)
set "whom=for everyone"
if "%~1"=="" goto find
if /i not "%~1"=="/user" goto unknown
shift
if "%~1"=="" goto user
:unknown
echo Unknown option "%~1". Run it without options, or with /user for yourself alone.
exit /b 2

:user
set "what=%what% /n /i:user"
set "whom=for this user"
goto find

:find
set failed=0
set "system=%SystemRoot%\System32"
if exist "%SystemRoot%\Sysnative\regsvr32.exe" set "system=%SystemRoot%\Sysnative"
set "is64="
if /i "%PROCESSOR_ARCHITECTURE%"=="AMD64" set is64=1
if /i "%PROCESSOR_ARCHITEW6432%"=="AMD64" set is64=1
if not defined is64 goto only32
call :change x64 "%system%\regsvr32.exe"
if exist "%SystemRoot%\SysWOW64\regsvr32.exe" (
  call :change x86 "%SystemRoot%\SysWOW64\regsvr32.exe"
) else (
  echo x86: left out, this Windows runs no 32-bit programs.
)
exit /b %failed%

:only32
call :change x86 "%SystemRoot%\System32\regsvr32.exe"
exit /b %failed%

:change
rem No path in parentheses or unquoted: it may hold parentheses and ampersands itself.
set "dll=%here%%1\vellum250.dll"
if not exist "%dll%" goto missing
"%~2" %what% "%dll%"
set code=%errorlevel%
if not "%code%"=="0" goto refused
echo %1: %done% %whom%.
goto :eof

:missing
echo %1: there is no "%dll%". Unpack the whole zip first.
set failed=1
goto :eof

:refused
set failed=1
echo %1: FAILED, regsvr32 ended with %code% for "%dll%":
if "%code%"=="3" (
  echo   it could not be loaded. The file is damaged, blocked ^(see its Properties^),
  echo   or no program may be run from this folder.
) else if "%code%"=="4" (
  echo   it is another program's DLL of the same name.
) else if "%code%"=="5" (
  echo   the registry refused the change. For everyone it takes an administrator: right-click
  echo   the file and choose "Run as administrator", or run it with /user for yourself alone.
) else (
  echo   regsvr32 itself could not run.
)
goto :eof
