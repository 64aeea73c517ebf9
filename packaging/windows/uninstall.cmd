@echo off
rem Takes the classes of vellum250 out of the registry: see install.cmd.
call "%~dp0install.cmd" /u %*
