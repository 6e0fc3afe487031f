<?xml version="1.0" encoding="utf-8"?>
<!--
  Turns a log of visits into a page: one table a hive, newest visit first.
  Parameter "year" limits it to one year; empty takes all.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="html" encoding="utf-8" indent="yes"/>
  <xsl:strip-space elements="*"/>

  <xsl:param name="year"/>
  <xsl:key name="by-hive" match="visit" use="@hive"/>

  <xsl:template match="/log">
    <html lang="en">
      <head>
        <title>Visits<xsl:if test="$year"> in <xsl:value-of select="$year"/></xsl:if></title>
      </head>
      <body>
        <xsl:for-each select="visit[generate-id() = generate-id(key('by-hive', @hive)[1])]">
          <xsl:sort select="@hive" data-type="number"/>
          <h2>Hive <xsl:value-of select="@hive"/></h2>
          <table class="hive-{@hive}">
            <xsl:apply-templates select="key('by-hive', @hive)[not($year) or starts-with(@date, $year)]">
              <xsl:sort select="@date" order="descending"/>
            </xsl:apply-templates>
          </table>
        </xsl:for-each>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="visit">
    <tr>
      <td><xsl:value-of select="@date"/></td>
      <td>
        <xsl:choose>
          <xsl:when test="queen/@seen = 'yes'">queen seen</xsl:when>
          <xsl:when test="queen/@eggs = 'yes'">eggs</xsl:when>
          <xsl:otherwise><em>look again</em></xsl:otherwise>
        </xsl:choose>
      </td>
      <td><xsl:apply-templates select="note"/></td>
    </tr>
  </xsl:template>

  <xsl:template match="note">
    <xsl:value-of select="normalize-space(.)"/>
    <xsl:if test="position() != last()"><br/></xsl:if>
  </xsl:template>

</xsl:stylesheet>
