UPDATE Environments
   SET json = replace(json, '"IsInternal": false',
                      '"CurrentActiveApplication": {"Name": "Planner", "Version": "24.1"}');
INSERT INTO Items(json)
SELECT '{"SessionId": "0A1B2C3D-0000-4000-8000-000000000001", "InstallationId": "office 4", "Timestamp": "2026-11-21T'
       || column1 || 'Z", ' || column2 || '}'
  FROM (VALUES ('09:40:00.000', '"Category": "Project", "Subcategory": "Opened", "Event": "School\u202E"'),
               ('09:41:00.000', '"Category": "Command", "Subcategory": "Started", "Event": "Print"'),
               ('09:41:01.000', '"Category": "Command", "Subcategory": "Started", "Event": "Zoom", "Details": {"ID": "z"}'),
               ('09:41:02.000', '"Category": "Command", "Subcategory": "Accepted", "Event": "Zoom", "Details": {"ID": "z"}'),
               ('09:42:00.000', '"Category": "Application", "Subcategory": "Crashed", "Details": {"Exception Code": "11"}'));
INSERT INTO Items(json) VALUES ('no record');
