// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Embedded in every repository: what is packed refers to places in this text. Change no character
// of it; another text is another dictionary with a format number of its own (packing.cpp).
#include "database/engine/packing_text.h"

namespace tarnwick::jet {

const unsigned char kPackingStatistics[157] = {
    0x37, 0xA4, 0x30, 0xEC, 0x01, 0x00, 0x00, 0x00, 0x3F, 0x10, 0xB0, 0xDA, 0x34, 0x1D, 0x30, 0x0C,
    0xC3, 0x30, 0x0C, 0xC3, 0x30, 0x0C, 0xC3, 0x30, 0x40, 0x10, 0xB5, 0xDF, 0xE4, 0x65, 0x6D, 0x77,
    0x5B, 0xAB, 0xDB, 0x8D, 0x84, 0x34, 0xD2, 0x18, 0x4B, 0xC5, 0x9A, 0xD7, 0x56, 0x55, 0xAD, 0x67,
    0xA0, 0x19, 0x8C, 0x78, 0xFD, 0x7F, 0xD8, 0xD0, 0x63, 0xF8, 0xE8, 0x5B, 0xB3, 0x6E, 0x42, 0x04,
    0xD5, 0x90, 0xC7, 0x0E, 0x82, 0x2B, 0x70, 0x09, 0xA3, 0x00, 0x18, 0x00, 0x0A, 0x0C, 0x4A, 0x08,
    0x63, 0x19, 0x79, 0xE0, 0x0D, 0x00, 0x04, 0xA0, 0xC0, 0x80, 0x3E, 0x4C, 0x41, 0x2A, 0xA0, 0xCB,
    0xC3, 0xB1, 0x48, 0x18, 0x04, 0x39, 0x0C, 0xA4, 0x20, 0xC6, 0x8C, 0x32, 0x86, 0x00, 0x42, 0x00,
    0x99, 0x81, 0x99, 0x01, 0x00, 0x00, 0x00, 0x00, 0x84, 0x0C, 0x84, 0xA3, 0xA2, 0xC2, 0xF2, 0x70,
    0x3C, 0x16, 0x10, 0x46, 0x22, 0x41, 0x12, 0x46, 0x49, 0x8E, 0x25, 0xAD, 0x63, 0x04, 0x00, 0x00,
    0x00, 0x01, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00,
};

// Rare things first, common ones last: what is near is referred to in fewer bits.
const char kPackingText[] =
    R"text(ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA
&auml;&ouml;&uuml;&szlig;&eacute;&egrave;&agrave;&ccedil;&ntilde;&laquo;&raquo;&copy;&reg;&quot;&amp;&lt;&gt;&#8217;&#8220;
и не что он на по это как его но да ты к у же вы за бы так от меня еще нет из ему теперь когда даже ну ли если уже или быть был до вас можно при для мы тебя их чем сам чтобы без будто себя этот того потому какой который спасибо пожалуйста Здравствуйте, Добрый день! С уважением, письмо сообщение от кого тема Вложение телефон пишет: писал в сообщении Отправлено:
la que el en y a los se del las un por con no una su para es al lo como más o pero sus le ha me si sin sobre este ya entre cuando todo esta ser son dos también fue había era muy años hasta desde está mi porque qué sólo han yo hay vez puede todos así nos ni parte tiene él uno donde bien tiempo mismo ese ahora cada vida otro después gracias mensaje correo electrónico Un saludo, Hola escribió: Enviado: Asunto: Para: Fecha:
il di che è la per un in non sono una mi con ho si lo ma le ti ha da come no te i bene se questo io hai del della delle dei nel nella anche più quando tutto grazie messaggio scritto: Saluti, Cordiali saluti Ciao Oggetto: Inviato: Da: A:
een het de van ik te dat die in niet zijn is op aan met als voor had er maar om hem dan zou of wat mijn men dit zo door over ze bij ook tot je mij uit naar heb hebben kunnen wordt worden Groeten, schreef: Bericht Verzonden: Onderwerp:
de la le et les des en un du une que est pour qui dans a par plus pas au sur ne se ce il sont avec ou son mais comme on tout nous sa fait été aussi leur bien peut ces y deux même vous si je elle entre sans cette après être avoir votre vos notre faire encore lors merci Bonjour, Cordialement, Le message a écrit : Envoyé : Objet : À : De : c'est n'est d'un d'une qu'il j'ai l'on
der die und in den von zu das mit sich des auf für ist im dem nicht ein eine als auch es an werden aus er hat dass daß sie nach wird bei einer um am sind noch wie einem über einen so zum war haben nur oder aber vor zur bis mehr durch man sein wurde sei wenn können schon ich wir Sie Ihre Ihnen habe kann dann unter diese dieser gegen vom doch hier keine ihr sehr alle Zeit mich mir uns was wieder immer bitte danke Guten Tag, Hallo Sehr geehrte Damen und Herren, Mit freundlichen Grüßen Viele Grüße Liebe Grüße schrieb: -----Ursprüngliche Nachricht----- Von: Gesendet: An: Betreff: Am um Uhr Nachricht Anhang
<STYLE type=text/css>BODY { FONT-FAMILY: Arial, Helvetica, sans-serif; FONT-SIZE: 10pt; COLOR: #000000 } P.MsoNormal, LI.MsoNormal, DIV.MsoNormal { MARGIN: 0in 0in 0pt; mso-style-parent: ""; font-family: "Times New Roman"; } A:link { COLOR: blue; TEXT-DECORATION: underline } @page Section1 { size: 8.5in 11.0in; margin: 1.0in 1.25in 1.0in 1.25in; } DIV.Section1 { page: Section1 }</STYLE>
<html xmlns:v="urn:schemas-microsoft-com:vml" xmlns:o="urn:schemas-microsoft-com:office:office" xmlns:w="urn:schemas-microsoft-com:office:word" xmlns="http://www.w3.org/TR/REC-html40">
<table width="100%" border="0" cellspacing="0" cellpadding="0" align="center" bgcolor="#FFFFFF"><tr><td width="600" height="20" valign="top" colspan="2" align="left" nowrap><font face="Verdana, Arial, Helvetica, sans-serif" size="2" color="#000000"><b><a href="http://www.example.com/index.html" target="_blank"><img src="http://www.example.com/images/spacer.gif" width="1" height="1" border="0" alt=""></a></b></font></td></tr></table><br>
<center><h1></h1></center><strong></strong><span style="font-family: Arial; font-size: 12px; color: #333333;"></span><ul><li></li></ul><p align="center"><hr><input type="hidden" name="" value=""><form method="post" action="http://">
<?xml:namespace prefix = o ns = "urn:schemas-microsoft-com:office:office" /><o:p></o:p></SPAN></P>
<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.0 Transitional//EN">
<HTML><HEAD><TITLE></TITLE>
<META http-equiv=3DContent-Type content=3D"text/html; charset=3Diso-8859-1">
<META content=3D"MSHTML 6.00.2800.1106" name=3DGENERATOR>
<STYLE></STYLE>
</HEAD>
<BODY bgColor=3D#ffffff>
<DIV><FONT face=3DArial size=3D2></FONT>&nbsp;</DIV>
<BLOCKQUOTE dir=3Dltr style=3D"PADDING-RIGHT: 0px; PADDING-LEFT: 5px; MARGIN-LEFT: 5px; BORDER-LEFT: #000000 2px solid; MARGIN-RIGHT: 0px">
  <DIV style=3D"FONT: 10pt arial">----- Original Message ----- </DIV>
  <DIV style=3D"BACKGROUND: #e4e4e4; FONT: 10pt arial; font-color: black"><B>From:</B>=20
  <A title=3D href=3D"mailto:"></A> </DIV><B>To:</B> <B>Sent:</B> <B>Subject:</B> <DIV><BR></DIV></BLOCKQUOTE></BODY></HTML>
<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.0 Transitional//EN">
<HTML><HEAD>
<META http-equiv=Content-Type content="text/html; charset=iso-8859-1">
<META content="MSHTML 6.00.2900.2180" name=GENERATOR></HEAD>
<BODY bgColor=#ffffff>
<DIV><FONT face=Arial size=2></FONT>&nbsp;</DIV>
<DIV>&nbsp;</DIV><BLOCKQUOTE style="PADDING-RIGHT: 0px; PADDING-LEFT: 5px; MARGIN-LEFT: 5px; BORDER-LEFT: #000000 2px solid; MARGIN-RIGHT: 0px"><A href="mailto:"></A><BR></BODY></HTML>
X-MimeOLE: Produced By Microsoft MimeOLE V6.00.2800.1106
X-Unsent: 1
Content-Disposition: attachment;
	filename="document.doc"
Content-Type: application/octet-stream;
	name="picture.jpg"
Content-Type: image/jpeg;
Content-Type: image/gif;
Content-ID: <
Content-Type: application/msword; Content-Type: application/pdf; Content-Type: application/zip; Content-Type: application/x-zip-compressed; Content-Type: message/rfc822
Content-Transfer-Encoding: base64
begin 666 document.zip
end
Content-Disposition: inline; filename=
Content-Description:
Content-Type: multipart/signed; micalg=pgp-sha1; protocol="application/pgp-signature"
Content-Type: application/pgp-signature; name="signature.asc"
-----BEGIN PGP SIGNED MESSAGE-----
Hash: SHA1
-----BEGIN PGP SIGNATURE-----
Version: GnuPG v1.2.1 (GNU/Linux)
Comment: For info see http://www.gnupg.org
-----END PGP SIGNATURE-----
X-Priority: 3
X-MSMail-Priority: Normal
X-Mailer: Microsoft Outlook Express 6.00.2800.1106
X-Mailer: Microsoft Outlook IMO, Build 9.0.2416 (9.0.2911.0)
X-Mailer: QUALCOMM Windows Eudora Version 5.1
X-Mailer: Internet Mail Service (5.5.2653.19)
X-Mailer: Ximian Evolution 1.0.8
X-Mailer: The Bat! (v1.62) UNREG / CD5BF9353B3B7091
X-Mailer: Mozilla 4.79 [en] (Windows NT 5.0; U)
X-Accept-Language: en-us, en, de
User-Agent: Mozilla/5.0 (Windows; U; Windows NT 5.1; en-US; rv:1.4) Gecko/20030624
User-Agent: Mutt/1.4i
User-Agent: KMail/1.5
User-Agent: Microsoft-Entourage/10.1.1.2418
X-Originating-IP: [
X-OriginalArrivalTime: 12 Aug 2003 14:22:31.0093 (UTC) FILETIME=[
Importance: Normal
Sensitivity: Normal
Priority: normal
X-Sender:
Organization:
Disposition-Notification-To:
X-Spam-Status: No, hits=-1.5 required=5.0 tests=AWL,IN_REP_TO,KNOWN_MAILING_LIST,QUOTED_EMAIL_TEXT,REFERENCES,SIGNATURE_SHORT_DENSE,USER_AGENT version=2.50-cvs
X-Spam-Level: *****
X-Spam-Checker-Version: SpamAssassin 2.63
X-Virus-Scanned: by amavisd-new
X-MS-Has-Attach:
X-MS-TNEF-Correlator:
Thread-Topic:
Thread-Index: AcNg
content-class: urn:content-classes:message
X-Yahoo-Profile:
X-eGroups-Return:
Mailing-List: list contact -owner@yahoogroups.com
Delivered-To: mailing list @yahoogroups.com
Mailing-List: contact -help@; run by ezmlm
Precedence: bulk
Precedence: list
List-Help: <mailto:-request@?subject=help>
List-Post: <mailto:@>
List-Subscribe: <http://www/mailman/listinfo/>,
	<mailto:-request@?subject=subscribe>
List-Id: <.>
List-Unsubscribe: <http:///lists.sourceforge.net/lists/listinfo/>,
	<mailto:-request@lists.sourceforge.net?subject=unsubscribe>
List-Archive: <http:///pipermail//>
List-Software:
X-Mailman-Version: 2.0.11
X-BeenThere:
X-Loop:
Sender: -admin@
Sender: owner-
Errors-To: -admin@
To unsubscribe, e-mail: -unsubscribe@
For additional commands, e-mail: -help@
_______________________________________________
 mailing list
@lists.
http:///mailman/listinfo/
-------------------------------------------------------
This sf.net email is sponsored by: Do you Yahoo!?
Do You Yahoo!? Everything you'll ever need on one web page from News and Sport to Email and Music Charts http://uk.my.yahoo.com
MSN Photos is the easiest way to share and print your photos: http://photos.msn.com/support/worldwide.aspx
Get your FREE download of MSN Explorer at http://explorer.msn.com/intl.asp
To unsubscribe from this group, send an email to: -unsubscribe@yahoogroups.com
Your use of Yahoo! Groups is subject to http://docs.yahoo.com/info/terms/
This e-mail and any attachments are confidential and intended solely for the use of the individual or entity to whom they are addressed. If you have received this email in error please notify the sender immediately and delete it from your system. Any views or opinions expressed are those of the author.
If you no longer wish to receive our newsletter, click here to be removed from our mailing list. All rights reserved. Copyright (c) 2002
January February March April May June July August September October November December Monday Tuesday Wednesday Thursday Friday Saturday Sunday
information company business please available government international development university national security program service computer software internet system technology problem question research report number possible important following although including provide support change current different general interest without together through another against already between because before always never really actually probably something everything anything nothing someone everyone anyone however whether though since while during within under around where thought should would could might must every always address phone office meeting project version install download update file files directory server client network connection machine running kernel package build source code release linux windows microsoft user users group list message messages mailing website site page link online web free money market price order account credit offer customer product products sale special email address click subject received sent reply wrote write read know think believe understand remember want need like look find found give given take taken make made come going getting working trying using
and the of to in a is that it was for on are as with his they at be this from I have or by one had not but what all were when we there can an your which their said if do will each about how up out them then she many some so these would other into has more her two like him see time could no make than first been its who now people my made over did down only way find use may water long little very after words called just where most know get through back much before go good new write our used me man too any day same right look think also around another came come work three word must because does part
Thanks in advance, Best regards, Kind regards, Regards, Sincerely, Cheers, Hi all, Hello, Dear
> > > > I don't I'm it's that's can't doesn't didn't you're won't isn't there's I've I'll I'd we're they're let's
>> On Mon, On Tue, 12 Aug 2003 at 10:15:00AM +0200, wrote:
> -----Original Message-----
> From: [mailto:]
> Sent: Wednesday, August 13, 2003 9:12 AM
> To:
> Cc:
> Subject: RE:
----- Original Message -----
From: "
To: <
Cc: <
Sent: Thursday, September 05, 2002 11:30 PM
Subject: Re: [
On Fri, Sep 06, 2002 at 04:21:59PM -0400,
 --
http://www.
 .com/ .org/ .net/ .html
This is a multi-part message in MIME format.

------=_NextPart_000_0007_01C360A1.5F2D3B40
Content-Type: text/plain;
	charset="iso-8859-1"
Content-Transfer-Encoding: quoted-printable
Content-Type: text/html;
	charset="windows-1252"
 =20
=20
------=_NextPart_000_0007_01C360A1.5F2D3B40--
Return-Path: <>
X-Original-To:
Delivered-To: localhost.localdomain
X-UIDL:
Status: RO
Received: from localhost (localhost [127.0.0.1]) by (Postfix) with ESMTP id for <>; Tue, 10 Sep 2002 18:15:47 +0100 (IST)
Received: from [127.0.0.1] by localhost with IMAP (fetchmail-5.9.0) for (single-drop); Wed, 11 Sep 2002 13:50:49 -0400 (EDT)
Received: from mail.com (mail.com [216.136.171.252]) by (8.11.6/8.11.6) with ESMTP id g8A for <>; Thu, 22 Aug 2002 08:16:49 -0700 (PDT)
Received: (qmail 12345 invoked by uid 500); 19 Aug 2002 13:11:25 -0000
Received: (qmail 6124 invoked from network); 27 Oct 2003 09:05:42 -0000
Received: from unknown (HELO ) (192.168.0.1) by with SMTP; 3 Mar 2004 21:33:54 -0000
Received: from by with local (Exim 3.35 #1 (Debian)) id 17 for ; Sun, 01 Dec 2002 02:24:56 -0500
Received: from ([10.0.0.1]) by with Microsoft SMTPSVC(5.0.2195.5329); Sat, 28 Dec 2002 12:37:13 -0600
Received: by (Postfix, from userid 1000)
	for <>; Mon,  7 Oct 2002 20:05:28 +0000 (GMT)
Received: from
	by mail. (8.9.3/8.9.3) with SMTP id
	via SMTP; Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec
Date: Mon, 12 Jan 2004 10:23:41 +0100
From:
Reply-To:
To: undisclosed-recipients:;
Cc:
Bcc:
References: <
In-Reply-To: <
Message-ID: <000701c360a1$5f2d3b40$0100a8c0@>
Message-Id: <.@mail.>
Subject: Re:
Subject: Fwd:
Subject: [
MIME-Version: 1.0
Mime-Version: 1.0
Content-Type: multipart/mixed;
	boundary="----=_NextPart_000_0007_01C360A1.5F2D3B40"
Content-Type: multipart/alternative; boundary="=====================_"
Content-Type: text/html; charset="us-ascii"
Content-Type: text/plain; charset="us-ascii"
Content-Type: TEXT/PLAIN; charset=US-ASCII
Content-Type: text/plain; charset=ISO-8859-1; format=flowed
Content-Disposition: inline
Content-Length:
Lines:
Content-Transfer-Encoding: 8bit
Content-Transfer-Encoding: 7bit

)text";

const unsigned int kPackingTextSize = sizeof kPackingText - 1;

}  // namespace tarnwick::jet
