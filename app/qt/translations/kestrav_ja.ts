<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>ImageChooserDialog</name>
    <message>
        <source>Images (%1)</source>
        <translation>イメージ (%1)</translation>
    </message>
    <message>
        <source>Choose Fol&amp;der</source>
        <translation>フォルダーを選択(&amp;D)</translation>
    </message>
    <message>
        <source>Take the selected folder itself, or the one shown if none is selected</source>
        <translation>選択中のフォルダーそのもの、選択がなければ表示中のフォルダーを使います</translation>
    </message>
    <message>
        <source>%1 is no .%2 file.</source>
        <translation>%1 は .%2 ファイルではありません。</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
    <message>
        <source>Save the log</source>
        <translation>ログの保存</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>The log could not be saved to %1.</source>
        <translation>ログを %1 に保存できませんでした。</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>コピー(&amp;C)</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>すべて選択(&amp;A)</translation>
    </message>
    <message>
        <source>&amp;Save As…</source>
        <translation>名前を付けて保存(&amp;S)…</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Update &amp;Firmware…</source>
        <translation>ファームウェアを更新(&amp;F)…</translation>
    </message>
    <message>
        <source>Choose a firmware image, an fds file, and write it to the accessory</source>
        <translation>ファームウェアのイメージ(fds ファイル)を選び、アクセサリーに書き込みます</translation>
    </message>
    <message>
        <source>Update &amp;Icon…</source>
        <translation>アイコンを更新(&amp;I)…</translation>
    </message>
    <message>
        <source>Choose an icon image, a fif file, and write it to the accessory</source>
        <translation>アイコンのイメージ(fif ファイル)を選び、アクセサリーに書き込みます</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>ログ</translation>
    </message>
    <message>
        <source>What was done, one line a step</source>
        <translation>行われたことを 1 行ずつ示します</translation>
    </message>
    <message>
        <source>Update in progress</source>
        <translation>更新中</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>システムメッセージ</translation>
    </message>
    <message>
        <source>The newest line that went to the system log</source>
        <translation>システムログに送られた最新の行</translation>
    </message>
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
</context>
</TS>
