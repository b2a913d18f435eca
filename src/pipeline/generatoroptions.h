#pragma once

#include <QList>
#include <QString>

// What a pipeline step hands to the generator it creates, beyond database,
// folder, base name and line. Each generator reads the members it needs.
struct GeneratorOptions
{
    QList<quint8> lineList;
    bool compactArrays = false;
    bool sdoServerMode = false;
    QString fileSuffix;
    bool vobjExtras = false;
    bool j1939Present = false;
    bool moreThanJ1939 = false;
    bool leaveOutDocumentation = false;
    QString edsDefine;
    bool canFd = false;
    bool classical = false;
};
