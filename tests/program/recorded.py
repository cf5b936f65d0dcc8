"""What a session's store holds, read and changed as another program would."""

import contextlib
import os
import sqlite3


class Recorded:
    """For a desktop: what it adds to its `env` and call()."""

    def database(self):
        return os.path.join(self.env["XDG_DATA_HOME"], "Orvanta", "orvanta.db")

    def change(self, statement, *values):
        """Changes the store as another program would; returns the number of a row that it adds."""
        with contextlib.closing(sqlite3.connect(self.database())) as db, db:
            return db.execute(statement, values).lastrowid

    def stored(self, statement, *values, row=None):
        """What a query yields."""
        uri = f"file:{self.database()}?mode=ro"
        with contextlib.closing(sqlite3.connect(uri, uri=True)) as db:
            db.row_factory = row
            return db.execute(statement, values).fetchall()

    def hold(self):
        """The store held by another program: until this connection rolls back."""
        other = sqlite3.connect(self.database(), isolation_level=None)
        other.execute("BEGIN IMMEDIATE")
        return other

    def setting(self, key):
        return self.stored("SELECT value FROM settings WHERE key=?", key)[0][0]

    def set_setting(self, key, value):
        self.call("day")  # makes the store
        self.change("UPDATE settings SET value=? WHERE key=?", value, key)
        assert self.setting(key) == value, key

    def spans(self):
        """The spans in the file, oldest first."""
        try:
            return self.stored("SELECT * FROM events ORDER BY id", row=sqlite3.Row)
        except sqlite3.OperationalError as error:
            if str(error).startswith(("unable to open", "no such table")):
                return []  # not made yet
            raise
