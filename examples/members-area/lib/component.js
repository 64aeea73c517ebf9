'use strict';

// The component's report of a trapped failure begins so; a trace of a call does not.
const trappedFailure = /^Description: /;
const empty = new Map();

// Hands out `vellum250.address` objects ready for one request.
class AddressComponent {
  constructor(addon, connectionString, switches, dictionaries) {
    this.addon = addon;
    this.connectionString = connectionString;
    this.switches = switches;
    this.dictionaries = dictionaries;
  }

  // Runs work(address) and returns its result. The context is the thread's, shared by all requests,
  // so the whole of it is set anew; work must therefore be synchronous. A failure that the debug
  // switch trapped is raised here as it would be without the switch.
  use(request, method, work) {
    const { switches, dictionaries } = this;
    const address = this.addon.createObject('vellum250.address');
    address.Connection(this.connectionString);
    address.SysDebug(switches.debug);
    address.OnErrorOnly(switches.errorsOnly);
    address.RemoteHostIP(callerAddress(request));
    address.TextID(switches.textId);
    address.appDictShowText(switches.dictionaries ? dictionaries.texts : empty);
    address.appDictWebConfig(switches.dictionaries ? dictionaries.settings : empty);
    try {
      const result = work(address);
      if (trappedFailure.test(address.LastError)) throw new Error(address.LastError);
      return result;
    } finally {
      if (switches.debug)
        switches.record({ method, sql: address.LastSql, error: address.LastError });
    }
  }
}

// The visitor's address as administrators write it: IPv4 without the IPv6 wrapping.
function callerAddress(request) {
  return (request.socket.remoteAddress || '').replace(/^::ffff:/, '');
}

module.exports = { AddressComponent, callerAddress };
