'use strict';

const keptCalls = 8;

// How the pages call the component. Kept in memory: a restart begins with these values again.
class SiteSwitches {
  constructor() {
    this.debug = false; // SysDebug: failures go to LastError, pages show the last call
    this.errorsOnly = true; // OnErrorOnly: no traces in LastError
    this.dictionaries = true; // texts and settings from memory rather than the database
    this.textId = 1; // the text set shown
    this.recentCalls = []; // while debugging is on: { method, sql, error }, newest first
  }

  record(call) {
    this.recentCalls = [{ ...call, at: new Date() }, ...this.recentCalls].slice(0, keptCalls);
  }
}

module.exports = { SiteSwitches };
