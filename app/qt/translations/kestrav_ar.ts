<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en">
<context>
    <name>AccessoryLine</name>
    <message>
        <source>The accessory that an update will take</source>
        <translation>الملحق الذي سيأخذه التحديث</translation>
    </message>
    <message>
        <source>The computer doesn&apos;t tell which devices are attached.</source>
        <translation>لا يخبر الحاسوب بالأجهزة الموصولة.</translation>
    </message>
    <message>
        <source>Plug the accessory in.</source>
        <translation>صِل الملحق.</translation>
    </message>
    <message>
        <source>%1 accessories are plugged in. The update takes %2</source>
        <translation>%1 ملحقات موصولة. يأخذ التحديث %2</translation>
    </message>
    <message>
        <source>no disk yet</source>
        <translation>لا قرص بعد</translation>
    </message>
    <message>
        <source>serial number %1</source>
        <translation>الرقم التسلسلي %1</translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>Could not save changes while quitting. Quit anyway?</source>
        <comment>Quit without saves error question message</comment>
        <translation>تعذّر حفظ التغييرات عند الخروج. هل تريد الخروج رغم ذلك؟</translation>
    </message>
    <message>
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <comment>Quit without saves error question info</comment>
        <translation>إذا خرجت الآن فستفقد كل التغييرات التي أجريتها منذ آخر حفظ ناجح</translation>
    </message>
    <message>
        <source>Quit anyway</source>
        <comment>Quit anyway button title</comment>
        <translation>الخروج رغم ذلك</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>Cancel button title</comment>
        <translation>إلغاء</translation>
    </message>
</context>
<context>
    <name>HelpButton</name>
    <message>
        <source>Help</source>
        <translation>مساعدة</translation>
    </message>
    <message>
        <source>Help, and what somebody who helps you needs</source>
        <translation>مساعدة، وما يحتاج إليه من يساعدك</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;مساعدة</translation>
    </message>
    <message>
        <source>&amp;Copy Everything for Support</source>
        <translation>&amp;نسخ كل شيء للدعم</translation>
    </message>
    <message>
        <source>&amp;Save the Log with Times…</source>
        <translation>&amp;حفظ السجل مع الأوقات…</translation>
    </message>
    <message>
        <source>&amp;About Kestrav</source>
        <translation>&amp;حول Kestrav</translation>
    </message>
    <message>
        <source>Kestrav – Help</source>
        <translation>Kestrav – مساعدة</translation>
    </message>
    <message>
        <source>About Kestrav</source>
        <translation>حول Kestrav</translation>
    </message>
    <message>
        <source>Updates the firmware and the icon of a USB accessory.</source>
        <translation>يحدّث البرنامج الثابت والأيقونة لملحق USB.</translation>
    </message>
    <message>
        <source>&amp;Licences…</source>
        <translation>ال&amp;تراخيص…</translation>
    </message>
    <message>
        <source>Kestrav – Licences</source>
        <translation>Kestrav – التراخيص</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Everything is on the clipboard.</source>
        <translation>كل شيء في الحافظة.</translation>
    </message>
    <message>
        <source>Paste it into your message. It has the names of your image files and of your disks in it, and nothing of what is in them.</source>
        <translation>ألصقه في رسالتك. فيه أسماء ملفات الصور والأقراص لديك، ولا شيء من محتواها.</translation>
    </message>
</context>
<context>
    <name>ImageChooserDialog</name>
    <message>
        <source>Images (%1)</source>
        <translation>الصور (%1)</translation>
    </message>
    <message>
        <source>Choose Fol&amp;der</source>
        <translation>اختيار الم&amp;جلد</translation>
    </message>
    <message>
        <source>Take the selected folder itself, or the one shown if none is selected</source>
        <translation>استخدام المجلد المحدد نفسه، أو المجلد المعروض إن لم يُحدَّد أي مجلد</translation>
    </message>
    <message>
        <source>%1 is no .%2 file.</source>
        <translation>‏%1 ليس ملف ‎.%2.</translation>
    </message>
    <message>
        <source> or .</source>
        <translation> أو .</translation>
    </message>
</context>
<context>
    <name>ImageProblem</name>
    <message>
        <source>%1 is a folder. Choose the file in it that holds the image.</source>
        <translation>%1 مجلد. اختر الملف الذي فيه ويحتوي على الصورة.</translation>
    </message>
    <message>
        <source>%1 is a pipe. Choose a file that holds the image.</source>
        <translation>%1 أنبوب. اختر ملفًا يحتوي على الصورة.</translation>
    </message>
    <message>
        <source>%1 is a socket. Choose a file that holds the image.</source>
        <translation>%1 مقبس. اختر ملفًا يحتوي على الصورة.</translation>
    </message>
    <message>
        <source>%1 is a device. Choose a file that holds the image.</source>
        <translation>%1 جهاز. اختر ملفًا يحتوي على الصورة.</translation>
    </message>
    <message>
        <source>%1 can&apos;t be read: %2. Check your rights to it, or choose another file.</source>
        <translation>تعذّرت قراءة %1: %2. تحقق من صلاحياتك عليه أو اختر ملفًا آخر.</translation>
    </message>
</context>
<context>
    <name>LastMessage</name>
    <message>
        <source>Nothing was written to the accessory.</source>
        <translation>لم يُكتب شيء على الملحق.</translation>
    </message>
    <message>
        <source>The image may be on its way to the accessory: don&apos;t unplug it. Start Kestrav again and send the image again.</source>
        <translation>قد تكون الصورة في طريقها إلى الملحق: لا تفصله. شغّل Kestrav من جديد وأعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>It was not sending anything. What became of the last image stands in the log.</source>
        <translation>لم يكن شيء قيد الإرسال. ما آلت إليه آخر صورة مدوَّن في السجل.</translation>
    </message>
    <message>
        <source>The log: %1</source>
        <translation>السجل: %1</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>Kestrav has stopped.</source>
        <translation>توقّف Kestrav.</translation>
    </message>
</context>
<context>
    <name>LogTextEdit</name>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;نسخ</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>تحديد ال&amp;كل</translation>
    </message>
    <message>
        <source>&amp;Save As…</source>
        <translation>&amp;حفظ باسم…</translation>
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
        <translation>تحديث البرنامج ال&amp;ثابت…</translation>
    </message>
    <message>
        <source>Choose a firmware image, an fds file, and write it to the accessory</source>
        <translation>اختيار صورة برنامج ثابت، أي ملف fds، وكتابتها على الملحق</translation>
    </message>
    <message>
        <source>Update &amp;Icon…</source>
        <translation>تحديث الأي&amp;قونة…</translation>
    </message>
    <message>
        <source>Choose an icon image, a fif file, and write it to the accessory</source>
        <translation>اختيار صورة أيقونة، أي ملف fif، وكتابتها على الملحق</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>السجل</translation>
    </message>
    <message>
        <source>What was done, one line a step</source>
        <translation>ما تم فعله، سطر لكل خطوة</translation>
    </message>
    <message>
        <source>Update in progress</source>
        <translation>التحديث جارٍ</translation>
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
        <translation>إعادة الإر&amp;سال…</translation>
    </message>
    <message>
        <source>Send Again…</source>
        <translation>إعادة الإرسال…</translation>
    </message>
    <message>
        <source>Choose the same image once more</source>
        <translation>اختيار الصورة نفسها مرة أخرى</translation>
    </message>
    <message>
        <source>System message</source>
        <translation>رسالة النظام</translation>
    </message>
    <message>
        <source>What the service itself said last</source>
        <translation>آخر ما قالته الخدمة نفسها</translation>
    </message>
    <message>
        <source>Nothing has been sent yet.</source>
        <translation>لم يُرسَل شيء بعد.</translation>
    </message>
    <message>
        <source>Choose an image with one of the buttons.</source>
        <translation>اختر صورة بأحد الزرين.</translation>
    </message>
    <message>
        <source>The helper that may reach the accessory&apos;s disk is being installed.</source>
        <translation>يجري تثبيت المساعد الذي يصل إلى قرص الملحق.</translation>
    </message>
    <message>
        <source>That takes an administrator&apos;s password, once each launch. You may close the window instead.</source>
        <translation>يتطلب ذلك كلمة مرور أحد المديرين مرة عند كل تشغيل. ويمكنك إغلاق النافذة بدلًا من ذلك.</translation>
    </message>
</context>
<context>
    <name>Progress</name>
    <message>
        <source>Asking for an administrator&apos;s consent.</source>
        <translation>تُطلَب موافقة أحد المديرين.</translation>
    </message>
    <message>
        <source>Unmounting.</source>
        <translation>جارٍ فصل القرص.</translation>
    </message>
    <message>
        <source>Reading the image.</source>
        <translation>جارٍ قراءة الصورة.</translation>
    </message>
    <message>
        <source>Writing.</source>
        <translation>جارٍ الكتابة.</translation>
    </message>
    <message>
        <source>Writing: waiting until the accessory has kept it.</source>
        <translation>الكتابة: بانتظار أن يحفظها الملحق.</translation>
    </message>
    <message>
        <source>Checking: reading back and comparing.</source>
        <translation>التحقق: إعادة القراءة والمقارنة.</translation>
    </message>
    <message>
        <source>Done: waiting for the service&apos;s answer.</source>
        <translation>تم: بانتظار جواب الخدمة.</translation>
    </message>
    <message>
        <source>%1 %, %2 of %3</source>
        <translation>%1 %، %2 من %3</translation>
    </message>
</context>
<context>
    <name>Report</name>
    <message>
        <source>The firmware is on the accessory, read back and equal.</source>
        <translation>البرنامج الثابت على الملحق، أُعيدت قراءته وهو مطابق.</translation>
    </message>
    <message>
        <source>You may unplug it.</source>
        <translation>يمكنك فصله.</translation>
    </message>
    <message>
        <source>It reaches into the icon area: send the icon again, too.</source>
        <translation>يمتد إلى منطقة الأيقونة: أعد إرسال الأيقونة أيضًا.</translation>
    </message>
    <message>
        <source>The icon is on the accessory, read back and equal.</source>
        <translation>الأيقونة على الملحق، أُعيدت قراءتها وهي مطابقة.</translation>
    </message>
    <message>
        <source>The image is on the accessory: it was written and compared.</source>
        <translation>الصورة على الملحق: كُتبت وقورنت.</translation>
    </message>
    <message>
        <source>Not written: the computer doesn&apos;t tell which devices are attached.</source>
        <translation>لم يُكتب: لا يخبر الحاسوب بالأجهزة الموصولة.</translation>
    </message>
    <message>
        <source>Is /sys mounted? Mount it, then send the image again.</source>
        <translation>هل ‎/sys‎ موصول؟ صِله، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: the image is empty.</source>
        <translation>لم يُكتب: الصورة فارغة.</translation>
    </message>
    <message>
        <source>Choose another one.</source>
        <translation>اختر غيرها.</translation>
    </message>
    <message>
        <source>Not written: no accessory is plugged in.</source>
        <translation>لم يُكتب: لا ملحق موصول.</translation>
    </message>
    <message>
        <source>Plug it in, wait some seconds, then send the image again.</source>
        <translation>صِله، وانتظر ثوانيَ، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: nothing was handed over.</source>
        <translation>لم يُكتب: لم يُسلَّم شيء.</translation>
    </message>
    <message>
        <source>The log says why. Put that right, then send the image again.</source>
        <translation>يقول السجل السبب. أصلِحه، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: the service can&apos;t be reached.</source>
        <translation>لم يُكتب: يتعذر الوصول إلى الخدمة.</translation>
    </message>
    <message>
        <source>Is the loopback interface up? &apos;ip link set lo up&apos;, then send the image again.</source>
        <translation>هل واجهة الاسترجاع مفعّلة؟ &apos;ip link set lo up&apos;، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: the service is not running.</source>
        <translation>لم يُكتب: الخدمة لا تعمل.</translation>
    </message>
    <message>
        <source>&apos;systemctl start kestrav-commandd.socket&apos;, then send the image again.</source>
        <translation>&apos;systemctl start kestrav-commandd.socket&apos;، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: the service does not take the request.</source>
        <translation>لم يُكتب: لا تقبل الخدمة الطلب.</translation>
    </message>
    <message>
        <source>&apos;systemctl restart kestrav-commandd&apos;, then send the image again.</source>
        <translation>&apos;systemctl restart kestrav-commandd&apos;، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: the connection to the service broke off.</source>
        <translation>لم يُكتب: انقطع الاتصال بالخدمة.</translation>
    </message>
    <message>
        <source>Send the image again.</source>
        <translation>أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: the accessory is not plugged in.</source>
        <translation>لم يُكتب: الملحق غير موصول.</translation>
    </message>
    <message>
        <source>Plug it in, then send the image again.</source>
        <translation>صِله، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written: the accessory has no disk yet.</source>
        <translation>لم يُكتب: ليس للملحق قرص بعد.</translation>
    </message>
    <message>
        <source>Wait some seconds and try again; if that does not help, plug it in once more.</source>
        <translation>انتظر ثوانيَ وحاول مجددًا؛ فإن لم ينفع فأعد وصله.</translation>
    </message>
    <message>
        <source>Not written: the service refused.</source>
        <translation>لم يُكتب: رفضت الخدمة.</translation>
    </message>
    <message>
        <source>It says why below. Put that right, then send the image again.</source>
        <translation>تقول السبب أدناه. أصلِحه، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written whole: the accessory was unplugged in the middle.</source>
        <translation>لم يُكتب كاملًا: فُصل الملحق في أثناء الكتابة.</translation>
    </message>
    <message>
        <source>It may hold a mixture now: plug it in and send the image again.</source>
        <translation>قد يحوي الآن خليطًا: صِله وأعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written whole: it went wrong on the way.</source>
        <translation>لم يُكتب كاملًا: حدث خلل في أثناء الكتابة.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image again.</source>
        <translation>افصل الملحق، وصِله من جديد، وأعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Not written as it is: the image changed meanwhile.</source>
        <translation>لم يُكتب كما هو: تغيرت الصورة في أثناء ذلك.</translation>
    </message>
    <message>
        <source>Wait until nothing writes the file any more, then send it again.</source>
        <translation>انتظر حتى لا يكتب شيء في الملف، ثم أعد إرساله.</translation>
    </message>
    <message>
        <source>Not written: the service refused, and its answer did not come.</source>
        <translation>لم يُكتب: رفضت الخدمة، ولم يصل جوابها.</translation>
    </message>
    <message>
        <source>&apos;journalctl -t kestrav-commandd&apos; tells why.</source>
        <translation>&apos;journalctl -t kestrav-commandd&apos; يذكر السبب.</translation>
    </message>
    <message>
        <source>Not written whole: it failed, and the answer did not come.</source>
        <translation>لم يُكتب كاملًا: أخفق الأمر، ولم يصل الجواب.</translation>
    </message>
    <message>
        <source>Nobody knows: it was written, and could not be read back.</source>
        <translation>لا أحد يعلم: كُتبت الصورة وتعذرت إعادة قراءتها.</translation>
    </message>
    <message>
        <source>Unplug the accessory, plug it in again and send the image once more.</source>
        <translation>افصل الملحق، وصِله من جديد، وأرسل الصورة مرة أخرى.</translation>
    </message>
    <message>
        <source>Nobody knows: the answer is about another write.</source>
        <translation>لا أحد يعلم: الجواب عن كتابة أخرى.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug; send the image again.</source>
        <translation>لا تفصله؛ أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Nobody knows: only a part of the service&apos;s answer came.</source>
        <translation>لا أحد يعلم: لم يصل إلا جزء من جواب الخدمة.</translation>
    </message>
    <message>
        <source>Nobody knows: another program answers in the service&apos;s place.</source>
        <translation>لا أحد يعلم: يجيب برنامج آخر مكان الخدمة.</translation>
    </message>
    <message>
        <source>End it (&apos;kestravctl doctor&apos; names it), then send the image again.</source>
        <translation>أنهِه (&apos;kestravctl doctor&apos; يسميه)، ثم أعد إرسال الصورة.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer in time.</source>
        <translation>لا أحد يعلم: لم تُجب الخدمة في الوقت المحدد.</translation>
    </message>
    <message>
        <source>Nobody knows: the service gave no answer.</source>
        <translation>لا أحد يعلم: لم تُجب الخدمة.</translation>
    </message>
    <message>
        <source>Nobody knows: the service died while it wrote.</source>
        <translation>لا أحد يعلم: توقفت الخدمة وهي تكتب.</translation>
    </message>
    <message>
        <source>Not written: too many files are open for a connection to the service.</source>
        <translation>لم يُكتب: الملفات المفتوحة كثيرة جدًا فلا يمكن الاتصال بالخدمة.</translation>
    </message>
    <message>
        <source>Close other programs, start Kestrav again and send the image again.</source>
        <translation>أغلق البرامج الأخرى، وشغّل Kestrav من جديد، ثم أعد إرسال الصورة.</translation>
    </message>
</context>
<context>
    <name>UpdatePresenter</name>
    <message>
        <source>Reading the image.</source>
        <translation>جارٍ قراءة الصورة.</translation>
    </message>
    <message>
        <source>Asking the service to unmount; an administrator may be asked for consent.</source>
        <translation>يُطلَب من الخدمة فصل القرص؛ وقد تُطلَب موافقة أحد المديرين.</translation>
    </message>
    <message>
        <source>No answer has come, and the service goes on. Don&apos;t unplug the accessory.</source>
        <translation>لم يصل جواب، والخدمة مستمرة. لا تفصل الملحق.</translation>
    </message>
    <message>
        <source>Don&apos;t unplug the accessory.</source>
        <translation>لا تفصل الملحق.</translation>
    </message>
</context>
<context>
    <name>saveTextAs</name>
    <message>
        <source>Save the log</source>
        <translation>حفظ السجل</translation>
    </message>
    <message>
        <source>Kestrav</source>
        <translation>Kestrav</translation>
    </message>
    <message>
        <source>The log could not be saved to %1.</source>
        <translation>تعذّر حفظ السجل في %1.</translation>
    </message>
</context>
</TS>
