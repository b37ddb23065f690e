<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- lrelease (Debian: qt6-l10n-tools) makes files_de.qm of this; tst_FileUtilsGeneric loads it. -->
<TS version="2.1" language="de">
<context>
    <name>FileUtilsGeneric</name>
    <message>
        <source>Cannot create path: %1</source>
        <translation>Ordner nicht angelegt: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)</source>
        <comment>moved</comment>
        <translation>
            <numerusform>%n Datei bewegt</numerusform>
            <numerusform>%n Dateien bewegt</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>vex::FileUtilsGeneric</name>
    <message>
        <source>Cannot create path: %1</source>
        <translation>wrong context</translation>
    </message>
</context>
</TS>
