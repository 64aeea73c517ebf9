@echo off
rem Takes the classes of vellum250 out of the registry: see install.cmd.
"%~dp0install.cmd" /u %*
