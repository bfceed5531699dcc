<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>AccessoryLine</name>
    <message>
        <source>The accessory that an update will take</source>
        <translation>更新の対象になるアクセサリ</translation>
    </message>
    <message>
        <source>The computer doesn&apos;t tell which devices are attached.</source>
        <translation>接続されている機器をコンピュータから取得できません。</translation>
    </message>
    <message>
        <source>Plug the accessory in.</source>
        <translation>アクセサリを接続してください。</translation>
    </message>
    <message>
        <source>%1 accessories are plugged in. The update takes %2</source>
        <translation>%1 台のアクセサリが接続されています。更新の対象: %2</translation>
    </message>
    <message>
        <source>no disk yet</source>
        <translation>ディスクはまだありません</translation>
    </message>
    <message>
        <source>serial number %1</source>
        <translation>シリアル番号 %1</translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>Could not save changes while quitting. Quit anyway?</source>
        <comment>Quit without saves error question message</comment>
        <translation>終了時に変更を保存できませんでした。それでも終了しますか？</translation>
    </message>
    <message>
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <comment>Quit without saves error question info</comment>
        <translation>今終了すると、最後に正常に保存してからの変更が失われます</translation>
    </message>
    <message>
        <source>Quit anyway</source>
        <comment>Quit anyway button title</comment>
        <translation>それでも終了</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>Cancel button title</comment>
        <translation>キャンセル</translation>
    </message>
</context>
<context>
    <name>HelpButton</name>
    <message>
        <source>Help</source>
        <translation>ヘルプ</translation>
    </message>
    <message>
        <source>Help, and what somebody who helps you needs</source>
        <translation>ヘルプと、サポート担当者に必要な情報</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>ヘルプ(&amp;H)</translation>
    </message>
    <message>
        <source>&amp;Copy Everything for Support</source>
        <translation>サポート用にすべてコピー(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;Save the Log with Times…</source>
        <translation>時刻付きでログを保存(&amp;S)…</translation>
    </message>
    <message>
        <source>&amp;About Kestrav</source>
        <translation>Kestrav について(&amp;A)</translation>
    </message>
    <message>
        <source>Kestrav – Help</source>
        <translation>Kestrav – ヘルプ</translation>
    </message>
    <message>
        <source>About Kestrav</source>
        <translation>Kestrav について</translation>
    </message>
    <message>
        <source>Updates the firmware and the icon of a USB accessory.</source>
        <translation>USB アクセサリーのファームウェアとアイコンを更新します。</translation>
    </message>
    <message>
        <source>&amp;Licences…</source>
        <translation>ライセンス(&amp;L)…</translation>
    </message>
    <message>
        <source>Kestrav – Licences</source>
        <translation>Kestrav – ライセンス</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Everything is on the clipboard.</source>
        <translation>すべてクリップボードにコピーしました。</translation>
    </message>
    <message>
        <source>Paste it into your message. It has the names of your image files and of your disks in it, and nothing of what is in them.</source>
        <translation>メッセージに貼り付けてください。イメージファイルとディスクの名前は含まれますが、その内容は含まれません。</translation>
    </message>
</context>
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
    <message>
        <source> or .</source>
        <translation> または .</translation>
    </message>
</context>
<context>
    <name>ImageProblem</name>
    <message>
        <source>%1 is a folder. Choose the file in it that holds the image.</source>
        <translation>%1 はフォルダーです。その中の、イメージの入ったファイルを選んでください。</translation>
    </message>
    <message>
        <source>%1 is a pipe. Choose a file that holds the image.</source>
        <translation>%1 はパイプです。イメージの入ったファイルを選んでください。</translation>
    </message>
    <message>
        <source>%1 is a socket. Choose a file that holds the image.</source>
        <translation>%1 はソケットです。イメージの入ったファイルを選んでください。</translation>
    </message>
    <message>
        <source>%1 is a device. Choose a file that holds the image.</source>
        <translation>%1 はデバイスです。イメージの入ったファイルを選んでください。</translation>
    </message>
    <message>
        <source>%1 can&apos;t be read: %2. Check your rights to it, or choose another file.</source>
        <translation>%1 を読めません: %2。アクセス権を確かめるか、別のファイルを選んでください。</translation>
    </message>
</context>
<context>
    <name>LastMessage</name>
    <message>
        <source>Nothing was written to the accessory.</source>
        <translation>アクセサリには何も書き込まれていません。</translation>
    </message>
    <message>
        <source>The image may be on its way to the accessory: don&apos;t unplug it. Start Kestrav again and send the image again.</source>
        <translation>イメージはまだアクセサリへ送られている途中かもしれません。抜かないでください。Kestrav を起動し直して、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>It was not sending anything. What became of the last image stands in the log.</source>
        <translation>送信中のものはありませんでした。最後のイメージがどうなったかはログにあります。</translation>
    </message>
    <message>
        <source>The log: %1</source>
        <translation>ログ: %1</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Kestrav has stopped.</source>
        <translation>Kestrav は停止しました。</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
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
        <translation>ファームウェアのイメージ(fds ファイル)を選び、アクセサリに書き込みます</translation>
    </message>
    <message>
        <source>Update &amp;Icon…</source>
        <translation>アイコンを更新(&amp;I)…</translation>
    </message>
    <message>
        <source>Choose an icon image, a fif file, and write it to the accessory</source>
        <translation>アイコンのイメージ(fif ファイル)を選び、アクセサリに書き込みます</translation>
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
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
</context>
<context>
    <name>OutcomePanel</name>
    <message>
        <source>Send &amp;Again…</source>
        <translation>再送信(&amp;A)…</translation>
    </message>
    <message>
        <source>Send Again…</source>
        <translation>再送信…</translation>
    </message>
    <message>
        <source>Choose the same image once more</source>
        <translation>同じイメージをもう一度選びます</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>システムメッセージ</translation>
    </message>
    <message>
        <source>What the service itself said last</source>
        <translation>サービス自身からの最後のメッセージ</translation>
    </message>
    <message>
        <source>Nothing has been sent yet.</source>
        <translation>まだ何も送信していません。</translation>
    </message>
    <message>
        <source>Choose an image with one of the buttons.</source>
        <translation>ボタンでイメージを選んでください。</translation>
    </message>
    <message>
        <source>The helper that may reach the accessory&apos;s disk is being installed.</source>
        <translation>アクセサリのディスクに触れることができるヘルパーをインストールしています。</translation>
    </message>
    <message>
        <source>That takes an administrator&apos;s password, once each launch. You may close the window instead.</source>
        <translation>起動のたびに一度、管理者のパスワードが必要です。代わりにウィンドウを閉じてもかまいません。</translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>Asking for an administrator&apos;s consent.</source>
        <translation>管理者の同意を求めています。</translation>
    </message>
    <message>
        <source>Unmounting.</source>
        <translation>マウントを解除しています。</translation>
    </message>
    <message>
        <source>Reading the image.</source>
        <translation>イメージを読み込んでいます。</translation>
    </message>
    <message>
        <source>Writing.</source>
        <translation>書き込んでいます。</translation>
    </message>
    <message>
        <source>Writing: waiting until the accessory has kept it.</source>
        <translation>書き込み: アクセサリが保存し終えるのを待っています。</translation>
    </message>
    <message>
        <source>Checking: reading back and comparing.</source>
        <translation>確認: 読み戻して比較しています。</translation>
    </message>
    <message>
        <source>Done: waiting for the service&apos;s answer.</source>
        <translation>完了: サービスの応答を待っています。</translation>
    </message>
    <message>
        <source>%1 %, %2 of %3</source>
        <translation>%1 %、%3 中 %2</translation>
    </message>
</context>
<context>
    <name>Report</name>
    <message>
        <source>The firmware is on the accessory, read back and equal.</source>
        <translation>ファームウェアはアクセサリにあり、読み戻して一致しました。</translation>
    </message>
    <message>
        <source>You may unplug it.</source>
        <translation>取り外してもかまいません。</translation>
    </message>
    <message>
        <source>It reaches into the icon area: send the icon again, too.</source>
        <translation>アイコンの領域にまで達しています。アイコンも送り直してください。</translation>
    </message>
    <message>
        <source>The icon is on the accessory, read back and equal.</source>
        <translation>アイコンはアクセサリにあり、読み戻して一致しました。</translation>
    </message>
    <message>
        <source>The image is on the accessory: it was written and compared.</source>
        <translation>イメージはアクセサリにあります。書き込まれ、比較されました。</translation>
    </message>
    <message>
        <source>Not written: the computer doesn&apos;t tell which devices are attached.</source>
        <translation>書き込まれていません: 接続されている機器をコンピュータから取得できません。</translation>
    </message>
    <message>
        <source>Is /sys mounted? Mount it, then send the image again.</source>
        <translation>/sys はマウントされていますか。マウントしてから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the image is empty.</source>
        <translation>書き込まれていません: イメージが空です。</translation>
    </message>
    <message>
        <source>Choose another one.</source>
        <translation>別のものを選んでください。</translation>
    </message>
    <message>
        <source>Not written: no accessory is plugged in.</source>
        <translation>書き込まれていません: アクセサリが接続されていません。</translation>
    </message>
    <message>
        <source>Plug it in, wait some seconds, then send the image again.</source>
        <translation>接続して数秒待ってから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: nothing was handed over.</source>
        <translation>書き込まれていません: 何も渡されませんでした。</translation>
    </message>
    <message>
        <source>The log says why. Put that right, then send the image again.</source>
        <translation>理由はログにあります。解決してから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the service can&apos;t be reached.</source>
        <translation>書き込まれていません: サービスに接続できません。</translation>
    </message>
    <message>
        <source>Is the loopback interface up? &apos;ip link set lo up&apos;, then send the image again.</source>
        <translation>ループバックインターフェイスは有効ですか。&apos;ip link set lo up&apos; を実行してから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the service is not running.</source>
        <translation>書き込まれていません: サービスが動いていません。</translation>
    </message>
    <message>
        <source>&apos;systemctl start kestrav-commandd.socket&apos;, then send the image again.</source>
        <translation>&apos;systemctl start kestrav-commandd.socket&apos; を実行してから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the service does not take the request.</source>
        <translation>書き込まれていません: サービスが要求を受け付けません。</translation>
    </message>
    <message>
        <source>&apos;systemctl restart kestrav-commandd&apos;, then send the image again.</source>
        <translation>&apos;systemctl restart kestrav-commandd&apos; を実行してから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the connection to the service broke off.</source>
        <translation>書き込まれていません: サービスへの接続が切れました。</translation>
    </message>
    <message>
        <source>Send the image again.</source>
        <translation>イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the accessory is not plugged in.</source>
        <translation>書き込まれていません: アクセサリが接続されていません。</translation>
    </message>
    <message>
        <source>Plug it in, then send the image again.</source>
        <translation>接続してから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the accessory has no disk yet.</source>
        <translation>書き込まれていません: アクセサリにはまだディスクがありません。</translation>
    </message>
    <message>
        <source>Wait some seconds and try again; if that does not help, plug it in once more.</source>
        <translation>数秒待ってからもう一度試してください。それでもだめなら接続し直してください。</translation>
    </message>
    <message>
        <source>Not written: the service refused.</source>
        <translation>書き込まれていません: サービスが拒否しました。</translation>
    </message>
    <message>
        <source>It says why below. Put that right, then send the image again.</source>
        <translation>理由は下にあります。解決してから、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written whole: the accessory was unplugged in the middle.</source>
        <translation>全部は書き込まれていません: 途中でアクセサリが取り外されました。</translation>
    </message>
    <message>
        <source>It may hold a mixture now: plug it in and send the image again.</source>
        <translation>中身が混ざっているかもしれません。接続してイメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written whole: it went wrong on the way.</source>
        <translation>全部は書き込まれていません: 途中で問題が起きました。</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image again.</source>
        <translation>アクセサリを取り外し、接続し直して、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Not written as it is: the image changed meanwhile.</source>
        <translation>そのままでは書き込まれていません: イメージが途中で変わりました。</translation>
    </message>
    <message>
        <source>Wait until nothing writes the file any more, then send it again.</source>
        <translation>ファイルへの書き込みが終わってから、送り直してください。</translation>
    </message>
    <message>
        <source>Not written: the service refused, and its answer did not come.</source>
        <translation>書き込まれていません: サービスが拒否し、その応答は届きませんでした。</translation>
    </message>
    <message>
        <source>&apos;journalctl -t kestrav-commandd&apos; tells why.</source>
        <translation>理由は &apos;journalctl -t kestrav-commandd&apos; でわかります。</translation>
    </message>
    <message>
        <source>Not written whole: it failed, and the answer did not come.</source>
        <translation>全部は書き込まれていません: 失敗し、応答は届きませんでした。</translation>
    </message>
    <message>
        <source>Nobody knows: it was written, and could not be read back.</source>
        <translation>結果は不明です: 書き込まれましたが、読み戻せませんでした。</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image once more.</source>
        <translation>アクセサリを取り外し、接続し直して、イメージをもう一度送ってください。</translation>
    </message>
    <message>
        <source>Nobody knows: the answer is about another write.</source>
        <translation>結果は不明です: 応答は別の書き込みについてのものです。</translation>
    </message>
    <message>
        <source>Don&apos;t unplug; send the image again.</source>
        <translation>取り外さずに、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Nobody knows: only a part of the service&apos;s answer came.</source>
        <translation>結果は不明です: サービスの応答は一部しか届きませんでした。</translation>
    </message>
    <message>
        <source>Nobody knows: another program answers in the service&apos;s place.</source>
        <translation>結果は不明です: サービスの代わりに別のプログラムが応答しています。</translation>
    </message>
    <message>
        <source>End it (&apos;kestravctl doctor&apos; names it), then send the image again.</source>
        <translation>それを終了してから (&apos;kestravctl doctor&apos; で名前がわかります)、イメージを送り直してください。</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer in time.</source>
        <translation>結果は不明です: サービスが時間内に応答しませんでした。</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer.</source>
        <translation>結果は不明です: サービスが応答しませんでした。</translation>
    </message>
    <message>
        <source>Nobody knows: the service died while it wrote.</source>
        <translation>結果は不明です: 書き込み中にサービスが停止しました。</translation>
    </message>
    <message>
        <source>Not written: too many files are open for a connection to the service.</source>
        <translation>書き込まれていません: 開いているファイルが多すぎて、サービスに接続できません。</translation>
    </message>
    <message>
        <source>Close other programs, start Kestrav again and send the image again.</source>
        <translation>ほかのプログラムを閉じ、Kestrav を起動し直してから、イメージを送り直してください。</translation>
    </message>
</context>
<context>
    <name>UpdatePresenter</name>
    <message>
        <source>Reading the image.</source>
        <translation>イメージを読み込んでいます。</translation>
    </message>
    <message>
        <source>Asking the service to unmount; an administrator may be asked for consent.</source>
        <translation>サービスにマウント解除を依頼しています。管理者の同意を求められることがあります。</translation>
    </message>
    <message>
        <source>No answer has come, and the service goes on. Don&apos;t unplug the accessory.</source>
        <translation>応答はまだありませんが、サービスは続けています。アクセサリを取り外さないでください。</translation>
    </message>
    <message>
        <source>Don&apos;t unplug the accessory.</source>
        <translation>アクセサリを取り外さないでください。</translation>
    </message>
</context>
<context>
    <name>saveTextAs</name>
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
</context>
</TS>
