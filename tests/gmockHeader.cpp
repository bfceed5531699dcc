// Nothing: this program is there for its precompiled header, which every test uses.
