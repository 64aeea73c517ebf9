/**
 * The vellum250 automation components under Node.js.
 *
 * Everything here is synchronous and belongs to the thread that called it. Each JavaScript thread
 * (the main thread, a worker) has its own component context: connection string, debug switches,
 * text id and dictionaries are remembered between calls, also from one request to the next, so a
 * page sets what it relies on.
 */

/**
 * What a page may pass as an argument or assign to a property.
 *
 * - `undefined` is an argument left out; `null` is the database's Null.
 * - A whole number of up to 32 bits is an integer, any other number a double; a `bigint` of up to
 *   96 bits is an exact decimal.
 * - A `Date` is taken in local time, to the millisecond; years 100 to 9999.
 * - Strings keep every code unit, lone surrogates and U+0000 included.
 * - Anything else (functions, symbols, arrays, plain objects) is a type mismatch, failure 13.
 */
export type Value =
  | undefined | null | boolean | number | bigint | string | Date
  | WebDictionary | AutomationObject;

/** What a member gives back. A decimal number arrives as its digits in a string. */
export type Result = undefined | null | boolean | number | string | Date | any;

/**
 * A dictionary of texts or settings: a `Map`, or any object with these members. It is asked while a
 * component's method runs and only on the thread that handed it over; what it throws becomes the
 * failure of that method (number 440 unless it has one) and is the failure's `cause`. A `Map` is
 * read by the built-in functions of `Map`, whatever a derived class puts in their place.
 */
export type WebDictionary =
  | Map<string, Value>
  | {
      /** How many entries there are; 0 makes the library ask the database instead. */
      Count: number | (() => number);
      /** Whether there is an entry of exactly this key. */
      Exists(key: string): boolean;
      /** The entry of this key; `null` counts as an empty text. */
      Item(key: string): Value;
    };

/**
 * An object of a component class. Its members have their published names, in exactly that letter
 * case: methods, whose optional arguments may be left out or `undefined`, and properties. Assigning
 * to a name the class does not have is failure 438, and so is reading one that only differs in
 * letter case; any other unknown name reads as `undefined`.
 *
 * The same component object is always the same JavaScript object.
 */
export interface AutomationObject {
  [member: string]: any;
  /** Of a collection only: walks its standard enumerator, which read as a property is such an
   * iterator too. */
  [Symbol.iterator](): IterableIterator<Result>;
}

/**
 * The failure of a component or a database, thrown as an `Error`; `message` is the description.
 */
export interface Failure extends Error {
  /**
   * A run-time error of the script language, for example 5 (invalid procedure call or argument),
   * 6 (overflow), 7 (out of memory), 13 (type mismatch), 94 (invalid use of Null), 429 (no such
   * class), 438 (no such member), 440 (a page's own object threw), 449 (argument not optional),
   * 450 (wrong number of arguments); or an HRESULT, which is negative: -2147217900 a statement the
   * database does not understand, -2147217873 a broken constraint, -2147217843 a refused logon,
   * -2147217871 a time-out, -2147467259 any other failure of a database.
   */
  number: number;
  /** Where it arose: "vellum250", or the provider of the database. */
  source: string;
  /** The words, never empty and never with a password. */
  description: string;
  /** Of a database's failure: the server's message number, 0 when unknown. */
  nativeNumber?: number;
  /** Of a database's failure: the 1-based line of the statements, 0 when unknown. */
  line?: number;
  /** What a page's own object threw. */
  cause?: unknown;
}

/**
 * Makes a new object of a component class.
 * @param name the automation name, without regard to case: "vellum250.address"
 * @throws {Failure} 429 when there is no such class
 */
export function createObject(name: string): AutomationObject;

/** An argument passed by reference. */
export interface Ref<T = any> {
  /** Before the call the argument; afterwards what the method made of it, also when it threw. */
  value: T;
}

/**
 * Passes `value` by reference. Without a value it is an empty variable, not an argument left out.
 *
 *     const owner = ref(17);
 *     address.InsertIndividualAddress(owner, ...);
 *     owner.value;
 */
export function ref<T = any>(value?: T): Ref<T>;

/** A parameter of a statement. */
export type SqlValue = null | boolean | number | bigint | string | Date;

/** A column's value: `bigint`, `decimal` and `numeric` columns arrive as strings of digits. */
export type SqlResult = null | boolean | number | string | Date;

/** An open connection to a database. */
export interface Connection {
  /**
   * Runs statements and reads the first result.
   * @param sql T-SQL; every `?` in it takes the next parameter
   * @returns one object for each row, the values by column name; a column without name by its
   *   1-based position, of several with one name the first. Empty when there is no result.
   * @throws {Failure} also for a statement after the one with the result; 3704 after `close`
   */
  query(sql: string, parameters?: SqlValue[]): Record<string, SqlResult>[];

  /**
   * Runs statements and reads everything they give: their results, and the numbers of rows that
   * the others changed, in order.
   * @throws {Failure} the first failure; 3704 after `close`
   */
  batch(sql: string, parameters?: SqlValue[]): {
    results: { columns: { name: string; type: string }[]; rows: SqlResult[][] }[];
    rowCounts: number[];
  };

  /** Gives the connection back to its provider's pool. Once is enough, twice does no harm. */
  close(): void;
}

/**
 * Opens a connection through the library's own providers.
 * @param connectionString as the components take it: "Driver=Vellum250;Database=<file>;" for the
 *   embedded database, anything else for ODBC
 * @throws {Failure} when it is no connection string or the database cannot be reached
 */
export function open(connectionString: string): Connection;
