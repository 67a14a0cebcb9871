#!/bin/bash
# The story as a Maven project, built offline from a clean folder and an empty local repository.
#
#   maven.sh repository
source "$(dirname "$0")/story.sh"
cp "$sources/maven/pom.xml" .
mkdir -p src/main
cp -r "$sources/src" src/main/java

cat >settings.xml <<XML
<settings>
  <localRepository>$work/local</localRepository>
  <mirrors>
    <mirror><id>debian</id><mirrorOf>central</mirrorOf><url>file:///usr/share/maven-repo</url></mirror>
  </mirrors>
  <profiles>
    <profile>
      <id>settings</id>
      <repositories>
        <repository><id>settings</id><url>file://$repository</url></repository>
      </repositories>
    </profile>
  </profiles>
  <activeProfiles><activeProfile>settings</activeProfile></activeProfiles>
</settings>
XML
JAVA_HOME=$java_home mvn --offline -Daether.offline.protocols=file --batch-mode --quiet -s settings.xml \
  -Dnativesettings.version="$version" package >log 2>&1 || fail "$(cat log)"
dependency=$work/local/com/velonix/nativesettings/$version/nativesettings-$version.jar
cmp "$jar" "$dependency"
tell_story "Maven" "$java_home/bin/java" -p "$dependency:target/story-1.jar" -m story/story.Story

# A program that knows java.util.prefs only, and is halted after its put.
prefs=$work/local/com/velonix/nativesettings-prefs/$version/nativesettings-prefs-$version.jar
mkdir preferences
for before in none 14; do
  SETTINGS_USERDIR=$work/preferences "$java_home/bin/java" -Djava.util.prefs.userRoot="$work" \
    -cp "$dependency:$prefs" "$sources/Preferring.java" >output 2>&1
  [[ $(cat output) == "$before" ]] || fail "preferences: $(cat output)"
done
echo "Maven: the preferences are kept"
