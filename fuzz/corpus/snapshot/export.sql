PRAGMA page_size = 512;
CREATE TABLE ZeldbExport (FormatVersion INTEGER, ZeldbVersion TEXT, Written TEXT, Masked INTEGER);
INSERT INTO ZeldbExport VALUES (1, '0.1.0', '', 0);
CREATE TABLE ZeldbFiles (Name TEXT, Content TEXT);
INSERT INTO ZeldbFiles VALUES ('bios.json', '{"collections":[]}'), ('../other', 'x');
CREATE TABLE PCIAdapter (PCIKey INTEGER, CardName TEXT, Other BLOB);
INSERT INTO PCIAdapter VALUES (1, 'a card', x'00'), (NULL, NULL, 3.5);
